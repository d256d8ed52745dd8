#pragma once

#include <QString>
#include <QStringList>

/// The units that a configuration file names, or a line that says what is wrong with the file.
struct UnitList
{
    QStringList names; ///< in the order of the file
    QString error;     ///< one line naming file and key; empty when the file is right
};

namespace unitlist {

/// The file that the plugin takes the units' settings from, under the application's folder.
QString defaultFile();

/// Reads the names of the units of an INI file and checks the settings that the plugin will read for them.
/// The plugin itself takes a wrong value as 0 and says nothing, so a host has to look first.
UnitList read(const QString& file);

/// What is wrong with the sections of "serial.ini" that the serial units of a checked configuration use, in
/// one line; empty when all is right. A port without a section takes the defaults.
QString lineError(const QString& serialFile, const QString& deviceFile, const QStringList& units);

/// The units to run: those of wanted that are configured, or all when nothing is wanted. An unknown name
/// is an error.
UnitList select(const QStringList& configured, const QStringList& wanted);

} // namespace unitlist
