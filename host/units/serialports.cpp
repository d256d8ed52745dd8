#include "serialports.h"

#include <QCollator>
#include <QDir>
#include <QFile>
#include <QMap>

#include <algorithm>

namespace {

QString firstLineOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readLine()).trimmed() : QString();
}

// The kernel keeps names for UARTs that a board may have; a type of 0 means that it does not.
bool isReal(const QString& ttyFolder)
{
    return QFileInfo::exists(ttyFolder + QStringLiteral("/device")) &&
           firstLineOf(ttyFolder + QStringLiteral("/type")) != QLatin1String("0");
}

// An adapter's product text lies with its USB device, some levels above the port.
QString productOf(const QString& ttyFolder)
{
    QDir folder(QFileInfo(ttyFolder + QStringLiteral("/device")).canonicalFilePath());
    for (int level = 0; level < 3; ++level) {
        QString product = firstLineOf(folder.filePath(QStringLiteral("product")));
        if (!product.isEmpty())
            return product;
        folder.setPath(folder.filePath(QStringLiteral("..")));
    }
    return {};
}

} // namespace

QVector<SerialPortName> serialports::list(const QString& root)
{
    QMap<QString, QString> stableNames; // by device name
    const QString byId = QStringLiteral("/dev/serial/by-id/");
    const QFileInfoList links = QDir(root + byId).entryInfoList(QDir::Files | QDir::System);
    for (const QFileInfo& link : links)
        stableNames.insert(QFileInfo(link.symLinkTarget()).fileName(), byId + link.fileName());

    const QString classFolder = root + QStringLiteral("/sys/class/tty/");
    QStringList names = QDir(classFolder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCollator order;
    order.setNumericMode(true); // ttyS2 before ttyS10
    std::sort(names.begin(), names.end(), order);
    QVector<SerialPortName> adapters;
    QVector<SerialPortName> others;
    for (const QString& name : qAsConst(names)) {
        const QString folder = classFolder + name;
        if (!isReal(folder))
            continue;
        const QString product = productOf(folder);
        if (stableNames.contains(name))
            adapters.append({stableNames.value(name),
                             product.isEmpty() ? name : QString(name + QStringLiteral(", ") + product)});
        else
            others.append({QStringLiteral("/dev/") + name, product});
    }
    return adapters + others;
}

QString serialports::deviceOf(const QString& portName)
{
    const QString device = QFileInfo(portName).canonicalFilePath();
    return device.isEmpty() ? portName : device;
}
