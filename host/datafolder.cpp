#include "datafolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

const auto configurationFolder = QLatin1String("PVMX");

// A link that leads nowhere is left from an installation that has moved.
void shareWithUser(const QString& target, const QString& name)
{
    if (QFileInfo::exists(name))
        return;
    if (QFileInfo(name).isSymLink())
        QFile::remove(name);
    QFile::link(target, name);
}

} // namespace

bool datafolder::isInstalled(const QString& programFolder)
{
    return QFileInfo::exists(programFolder + QStringLiteral("/installed"));
}

QString datafolder::path()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .absoluteFilePath(QStringLiteral("ups-host"));
}

QString datafolder::enter(const QString& programFolder)
{
    if (!isInstalled(programFolder))
        return {};
    const QString folder = path();
    if (!QDir().mkpath(folder) || !QDir::setCurrent(folder))
        return QStringLiteral("%1: the data folder cannot be used: set XDG_DATA_HOME to a folder that you "
                              "may write to")
            .arg(folder);
    const QString configuration = programFolder + QLatin1Char('/') + configurationFolder;
    shareWithUser(configuration, configurationFolder); // the plugin looks for the history's code map here
    // Units are the machine's, so their lines are as well.
    const QString lines = QStringLiteral("serial.ini");
    shareWithUser(configuration + QLatin1Char('/') + lines, lines);
    return {};
}
