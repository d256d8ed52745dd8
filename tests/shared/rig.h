#pragma once

#include "simulatorprocess.h"

#include <QJsonObject>
#include <QList>
#include <QTemporaryDir>

#include <map>
#include <memory>

/// Types of a host's events.
enum EventType
{
    Restored = 1040,
    Lost = 1041,
    Downloaded = 1042,
    Echo = 2001,
    AlarmChanged = 2006,
    Data = 2007,
    StatusPoint2368 = 2009,
    StatusPoint2022 = 2010
};

constexpr int waitMs = 60000; // generous: sanitizers, two cores, other tests

int typeOf(const QJsonObject& event);
QJsonObject recordOf(const QJsonObject& event);

/// A folder with copies of everything that a host needs, simulated units and the host in it. One for each
/// test, so that tests share no configuration, port or log.
class Rig
{
public:
    Rig();
    ~Rig();

    /// Starts simulated units and waits until they can be reached; returns their TCP port, if they have one.
    /// The key names the process.
    int startUnits(const Text& key, const QStringList& arguments);
    /// Test rows for one unit "A" on either transport: columns "transport" and "config", for startUnitA().
    static void addTransportRows();
    /// Starts unit A of such a row under a scenario, with its trace in "trace", and writes its configuration;
    /// more are further lines of it.
    void startUnitA(const Text& transport, const Text& config, const Text& scenario, const Text& more = {},
                    const QStringList& options = {});
    /// The same on an unpaced serial line.
    void startSerialUnitA(const Text& scenario, const Text& more = {});

    /// Writes dev.ini.
    void writeUnits(const Text& text);
    void write(const Text& name, const QByteArray& content);

    /// Runs the host to its end and returns what it printed; exitCode gets -1 when it did not end well.
    QString runHost(const QStringList& arguments, int* exitCode);
    /// Starts the host with JSON output.
    void startHost(const QStringList& arguments);
    /// The records of what the host has printed of this unit and type since its start or the last
    /// takeEvents().
    QList<QJsonObject> events(const Text& unit, int type);
    /// All that the host has printed and nobody has taken: objects with unit, type and record.
    QList<QJsonObject> takeEvents();
    /// What the host has written to standard error since the rig was made.
    QByteArray hostErrors();
    void signalHost(int number);
    /// Kills the host without a warning; what it printed before can still be taken.
    void killHost();
    /// Ends the host by SIGTERM unless it ends by itself; its exit code.
    int stopHost();
    int waitForHost(int timeoutMs);

    /// The lines of a trace file of the simulator.
    QList<QJsonObject> trace(const Text& file) const;
    QString path(const Text& name) const { return m_folder.filePath(name); }

private:
    void start(const QStringList& arguments);
    void readHost();

    QTemporaryDir m_folder;
    std::map<QString, std::unique_ptr<Simulator>> m_units;
    QProcess m_host;
    QByteArray m_unread;
    QByteArray m_hostErrors;
    QList<QJsonObject> m_events;
};
