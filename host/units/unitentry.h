#pragma once

#include <QMap>
#include <QString>
#include <QVector>

/// One unit as a person edits it: texts, for a file may hold anything and an entry too.
struct UnitEntry
{
    QString storedName; ///< its section in "dev.ini"; empty for a unit that is not there yet
    QString name;
    QString commType = QStringLiteral("0"); ///< 0 serial line, 1 TCP
    QString portName;                       ///< device path of the serial line
    QString host;                           ///< TCP target
    QString tcpPort = QStringLiteral("502");
    QString address = QStringLiteral("1");
    QString retries = QStringLiteral("5");
    QString intervalS = QStringLiteral("5");

    bool isTcp() const { return commType.toInt() == 1; }
};

/// The settings of a serial port, which all units on it share.
struct LineEntry
{
    QString param = QStringLiteral("9600,n,8,1");
    QString timeoutMs = QStringLiteral("1000");
};

inline bool operator==(const LineEntry& a, const LineEntry& b)
{
    return a.param == b.param && a.timeoutMs == b.timeoutMs;
}

/// All units and the serial ports that they use.
struct UnitConfig
{
    QVector<UnitEntry> units;       ///< in the order of the file
    QMap<QString, LineEntry> lines; ///< by section of "serial.ini"; see unitentry::lineSection()
};

/// A text of a unit and the key that it is stored under.
struct UnitKey
{
    const char* key;
    QString UnitEntry::*text;
    bool isOnLine; ///< means something on a serial line
    bool isOnTcp;
};

// clang-format off
constexpr UnitKey unitKeys[] = {
    {"commType", &UnitEntry::commType,  false, true},
    {"portName", &UnitEntry::portName,  true,  false},
    {"ipAddr",   &UnitEntry::host,      false, true},
    {"port",     &UnitEntry::tcpPort,   false, true},
    {"addr",     &UnitEntry::address,   true,  true},
    {"retries",  &UnitEntry::retries,   true,  true},
    {"interval", &UnitEntry::intervalS, true,  true},
};
// clang-format on

namespace unitentry {

/// The section of "serial.ini" that a port's settings are read from: the reader passes over outer and
/// doubled slashes.
QString lineSection(const QString& portName);

} // namespace unitentry
