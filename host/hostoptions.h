#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// One command to send to a unit as soon as it communicates.
struct ControlRequest
{
    QString unitName;
    int id = 0;
    QString value; ///< handed on as it stands, may be empty
};

/// Which part of the journal to print instead of running.
struct ExportOptions
{
    QString eventsFile;              ///< where the events go as CSV; "-" is standard output, empty is nowhere
    QString logFile;                 ///< the same for the data log
    std::optional<qint64> fromUtcMs; ///< included
    std::optional<qint64> toUtcMs;   ///< not included
    QString unitName;                ///< empty is every unit

    bool isWanted() const { return !eventsFile.isEmpty() || !logFile.isEmpty(); }
};

/// What the command line asks for.
struct HostOptions
{
    int seconds = 0;       ///< how long to run; 0 is until a signal
    QStringList unitNames; ///< units to run, in this order; empty is every unit configured
    QString pluginFile;    ///< empty is the one beside the program
    QList<ControlRequest> controls;
    QString journalFile;   ///< empty keeps no journal
    QString choicesFile;   ///< remembers the window's geometry and choices; empty is the user's own
    int logIntervalS = 10; ///< between two rows of a unit's data log
    int keepDays = 0;      ///< how long the journal keeps its records; 0 is for ever
    ExportOptions exports;
    QString screenshotFolder; ///< where pictures of a unit's pages go, instead of running; empty is nowhere
    QString language;         ///< of the texts; empty is that of the program
    bool isHeadless = false;  ///< print lines instead of opening a window
    bool isCheck = false;     ///< look at each unit once, step by step, instead of running
    bool isJson = false;      ///< JSON lines instead of text
    bool isPolling = false;   ///< ask each unit for its cycles instead of starting its own thread
    bool isVerbose = false;   ///< show the debug lines of the plugin

    bool wantsWindow() const
    {
        return !isHeadless && !isCheck && screenshotFolder.isEmpty() && !exports.isWanted();
    }
    /// Pictures are taken with a journal of their own.
    bool keepsJournal() const { return !journalFile.isEmpty() && screenshotFolder.isEmpty(); }
};

/// The outcome of reading a command line: options, or a line that says what is wrong with it, or a text
/// to print instead of running.
struct ParsedOptions
{
    HostOptions options;
    QString error;    ///< one line; empty when the command line is right
    QString infoText; ///< help or version, when asked for
};

/// Reads a command line, the program's name included. Needs an application object for the help text. A host
/// that works in another folder than the caller gives the caller's as pathBase: relative paths of the command
/// line are made absolute from there. Without it they stay as they are.
ParsedOptions parseOptions(const QStringList& arguments, const QString& pathBase = QString());
