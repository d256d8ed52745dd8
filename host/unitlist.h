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

/// The units to run: those of wanted that are configured, or all when nothing is wanted. An unknown name
/// is an error.
UnitList select(const QStringList& configured, const QStringList& wanted);

} // namespace unitlist
