#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// One command to send to a unit as soon as it communicates.
struct ControlRequest
{
    QString unitName;
    int id = 0;
    QString value; ///< handed on as it stands, may be empty
};

/// What the command line asks for.
struct HostOptions
{
    int seconds = 0;       ///< how long to run; 0 is until a signal
    QStringList unitNames; ///< units to run, in this order; empty is every unit configured
    QString pluginFile;    ///< empty is the one beside the program
    QList<ControlRequest> controls;
    bool isJson = false;    ///< JSON lines instead of text
    bool isPolling = false; ///< ask each unit for its cycles instead of starting its own thread
    bool isVerbose = false; ///< show the debug lines of the plugin
};

/// The outcome of reading a command line: options, or a line that says what is wrong with it, or a text
/// to print instead of running.
struct ParsedOptions
{
    HostOptions options;
    QString error;    ///< one line; empty when the command line is right
    QString infoText; ///< help or version, when asked for
};

/// Reads a command line, the program's name included. Needs an application object for the help text.
ParsedOptions parseOptions(const QStringList& arguments);
