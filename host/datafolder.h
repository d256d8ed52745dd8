#pragma once

#include <QString>

/// Where an installed host works. Plugin and host keep "serial.ini", the journal, traffic logs and a fetched
/// history in the working directory: for a program that all users share that has to be a folder of the
/// user's.
namespace datafolder {

/// Whether the program in this folder was installed: the installation leaves a file there that says so. A
/// host that was built and never installed works in the folder that it is started in.
bool isInstalled(const QString& programFolder);

/// The user's folder, absolute: "ups-host" below XDG_DATA_HOME.
QString path();

/// Makes the user's folder, if need be, and works there from now on. What all users share is linked into it,
/// unless the user has put a file of that name there. Returns in one line why it cannot be used. Does nothing
/// for a program that was not installed.
QString enter(const QString& programFolder);

} // namespace datafolder
