#include "checksettings.h"

#include <QSettings>

namespace {

// Reads keys with their defaults and notes where each value came from.
class Reader
{
public:
    Reader(const QString& file, const QString& fileName, const QString& group, QStringList& described)
        : m_settings(file, QSettings::IniFormat)
        , m_fileName(fileName)
        , m_group(group)
        , m_described(described)
    {}

    QString value(const QString& key, const QString& defaultValue)
    {
        const QString path = m_group + QLatin1Char('/') + key;
        const bool isSet = m_settings.contains(path);
        // Unquoted commas make a list of a value.
        const QString text = m_settings.value(path, defaultValue).toStringList().join(QLatin1Char(','));
        m_described
            << QStringLiteral("%1=%2 (%3)").arg(key, text, isSet ? m_fileName : QStringLiteral("default"));
        return text;
    }

private:
    const QSettings m_settings;
    QString m_fileName;
    QString m_group;
    QStringList& m_described;
};

} // namespace

CheckSettings readCheckSettings(const QString& unitName, const QString& deviceFile)
{
    CheckSettings settings;
    Reader device(deviceFile, QStringLiteral("dev.ini"), unitName, settings.described);
    settings.isTcp = device.value(QStringLiteral("commType"), QStringLiteral("0")).toInt() == 1;
    settings.address = device.value(QStringLiteral("addr"), QStringLiteral("1")).toInt();
    device.value(QStringLiteral("retries"), QStringLiteral("5"));
    device.value(QStringLiteral("interval"), QStringLiteral("5"));
    if (settings.isTcp) {
        settings.host = device.value(QStringLiteral("ipAddr"), QString());
        settings.tcpPort = device.value(QStringLiteral("port"), QStringLiteral("502")).toInt();
        return settings;
    }
    settings.portName = device.value(QStringLiteral("portName"), QStringLiteral("COM1"));
    Reader serial(QStringLiteral("serial.ini"), QStringLiteral("serial.ini"), settings.portName,
                  settings.described);
    settings.lineSettings = serial.value(QStringLiteral("param"), QStringLiteral("9600,n,8,1"));
    settings.timeoutMs = serial.value(QStringLiteral("timeout"), QStringLiteral("1000")).toInt();
    return settings;
}
