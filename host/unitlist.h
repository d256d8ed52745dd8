#pragma once

#include <QString>
#include <QStringList>

/// The units that a configuration file names, or a line that says what is wrong with the file.
struct UnitList
{
    QStringList names; ///< in the order of the file
    QString error;     ///< one line naming file and key; empty when the file is right
};

/// The units to run, and which of them could be run.
struct UnitChoice
{
    QStringList configured;    ///< all of the configuration
    QStringList names;         ///< those of them that are wanted
    QString error;             ///< one line; empty when they can run
    bool isRepairable = false; ///< the files are wrong, not what was wanted
};

namespace unitlist {

/// The file that the plugin takes the units' settings from, under the application's folder.
QString defaultFile();
/// The file that the port manager takes the lines' settings from, in the working directory.
QString lineFile();

/// Reads the names of the units of an INI file and checks the settings that the plugin will read for them.
/// The plugin itself takes a wrong value as 0 and says nothing, so a host has to look first.
UnitList read(const QString& file);

/// What is wrong with the sections of "serial.ini" that the serial units of a checked configuration use, in
/// one line; empty when all is right. A port without a section takes the defaults.
QString lineError(const QString& serialFile, const QString& deviceFile, const QStringList& units);

/// The units to run: those of wanted that are configured, or all when nothing is wanted. An unknown name
/// is an error.
UnitList select(const QStringList& configured, const QStringList& wanted);

/// Reads both files and selects: everything that has to be right before a unit starts.
UnitChoice choose(const QStringList& wanted);

/// What to run of a configuration that was changed while some of the earlier one's units ran: those that ran,
/// and the new ones. A unit with a new name is a new one. All when that would be none.
QStringList afterChange(const QStringList& running, const QStringList& earlier, const QStringList& now);

} // namespace unitlist
