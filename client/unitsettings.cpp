#include "unitsettings.h"

#include <QCoreApplication>
#include <QSettings>

namespace unitsettings {

QString folder()
{
    return QCoreApplication::applicationDirPath().replace(QLatin1Char('\\'), QLatin1Char('/')) +
           QStringLiteral("/PVMX/") + QStringLiteral("drovaPanel") + QStringLiteral("/db");
}

UnitSettings read(const QString& unitName, int eventCount)
{
    const QSettings file(folder() + QStringLiteral("/dev.ini"), QSettings::IniFormat);
    // Joined, not filled in with arg(): a unit may be called "%1".
    const auto value = [&](const QString& key, const QVariant& defaultValue) {
        return file.value(QString(unitName + QLatin1Char('/') + key), defaultValue);
    };

    UnitSettings settings;
    settings.portName = value(QStringLiteral("portName"), QStringLiteral("COM1")).toString();
    settings.address = value(QStringLiteral("addr"), settings.address).toInt();
    settings.retryLimit = value(QStringLiteral("retries"), settings.retryLimit).toInt();
    settings.protocol = value(QStringLiteral("protocol"), settings.protocol).toInt();
    settings.intervalS = value(QStringLiteral("interval"), settings.intervalS).toInt();
    settings.commType = value(QStringLiteral("commType"), settings.commType).toInt();
    settings.ipAddress = value(QStringLiteral("ipAddr"), QString()).toString();
    settings.tcpPort = value(QStringLiteral("port"), settings.tcpPort).toInt();
    for (int code = 0; code < eventCount; ++code) {
        const QString key = QStringLiteral("eventChooseList/") + QString::number(code);
        settings.eventSelection.insert(code, value(key, 0).toInt());
    }
    return settings;
}

QString readLanguageCode()
{
    const QSettings file(folder() + QStringLiteral("/param.ini"), QSettings::IniFormat);
    // The inverted mapping is deliberate: drivers and history files were made for it.
    return file.value(QStringLiteral("Language"), 0).toInt() == 0 ? QStringLiteral("1") : QStringLiteral("0");
}

} // namespace unitsettings
