#pragma once

#include <QString>
#include <QStringList>

/// The settings of one unit as the plugin takes them, and where each came from.
struct CheckSettings
{
    bool isTcp = false;
    int address = 0;
    int timeoutMs = 1000; ///< of a read; fixed over TCP
    QString portName;     ///< serial device
    QString host;         ///< TCP target
    int tcpPort = 0;
    QString lineSettings;  ///< serial settings text
    QStringList described; ///< one text for each setting in effect: "addr=1 (dev.ini)"
};

/// Reads them for a unit of deviceFile ("dev.ini") and of "serial.ini" in the working directory. The files
/// have been checked before.
CheckSettings readCheckSettings(const QString& unitName, const QString& deviceFile);
