#pragma once

#include <QString>
#include <QVector>

/// A serial port that the system has now.
struct SerialPortName
{
    QString path;        ///< as "dev.ini" names it
    QString description; ///< what hangs on it; empty when the system does not know
};

/// The system's serial ports. Reads folders only: opening a device could disturb a unit that is being asked.
namespace serialports {

/// All ports; those of adapters under the name that stays the same whatever they are plugged into. root is
/// put before the system's paths.
QVector<SerialPortName> list(const QString& root = {});

/// The device behind a port's name, the same for every name that it has; the name itself when nothing is
/// there.
QString deviceOf(const QString& portName);

} // namespace serialports
