#pragma once

#include <QMap>
#include <QString>

/// The settings of one unit, as its group in "dev.ini" gives them.
struct UnitSettings
{
    QString portName;              ///< device path of the serial line
    int address = 1;               ///< the unit's address on the line
    int retryLimit = 5;            ///< failed cycles in a row until the unit counts as lost
    int protocol = 0;              ///< copied into event records
    int intervalS = 5;             ///< seconds between cycles that a host asks for
    int commType = 0;              ///< 1 is TCP
    QString ipAddress;             ///< TCP target
    int tcpPort = 502;             ///< TCP target
    QMap<int, int> eventSelection; ///< event code to selected flag
};

/// Reading the configuration files. A missing file or key gives the default.
namespace unitsettings {

/// The folder that holds "param.ini" and "dev.ini", under the application's own.
QString folder();

/// The settings of a unit; eventCount selection flags are read.
UnitSettings read(const QString& unitName, int eventCount);

/// The language code that "param.ini" asks for.
QString readLanguageCode();

} // namespace unitsettings
