#pragma once

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QTemporaryDir>

#include <map>
#include <memory>

/// A folder with copies of everything that runs, simulated units and a host in it. One for each test, so
/// that tests share no configuration, port or log.
class Rig
{
public:
    Rig();
    ~Rig();

    /// Starts simulated units and waits for their ready line; returns it. The key names the process.
    QString startUnits(const QString& key, const QStringList& arguments);
    /// Test rows for one unit "A" on either transport: columns "transport" and "config", for startUnitA().
    static void addTransportRows();
    /// Starts unit A of such a row under a scenario, with its trace in "trace", and writes its configuration;
    /// more are further lines of it.
    void startUnitA(const QStringList& transport, const QString& config, const QString& scenario,
                    const QStringList& more = {});
    /// Kills a simulator as a power cut would.
    void killUnits(const QString& key);

    /// Writes dev.ini; one list of lines for each unit, its first line the name in brackets.
    void writeUnits(const QStringList& lines);
    void writeFile(const QString& name, const QByteArray& content);

    /// Runs the host to its end and returns what it printed; exitCode gets -1 when it did not end well.
    QString runHost(const QStringList& arguments, int* exitCode);
    /// Starts the host with JSON output.
    void startHost(const QStringList& arguments);
    /// Reads what the host has printed; true once an event of this unit and type is among it (since the
    /// start or the last forget()).
    bool hasEvent(const QString& unit, int type);
    QList<QJsonObject> events(const QString& unit, int type);
    /// All that the host has printed and nobody has taken or forgotten: objects with unit, type and record.
    QList<QJsonObject> takeEvents();
    void forget();
    /// What the host has written to standard error since the rig was made.
    QByteArray hostErrors();
    /// Kills the host without a warning; what it printed before can still be taken.
    void killHost();
    /// Ends the host by SIGTERM unless it ends by itself; its exit code.
    int stopHost();
    int waitForHost(int timeoutMs);

    /// The lines of a trace file of the simulator.
    QList<QJsonObject> trace(const QString& file) const;
    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    void readHost();
    void readHostErrors();

    QTemporaryDir m_folder;
    std::map<QString, std::unique_ptr<QProcess>> m_units;
    QProcess m_host;
    QByteArray m_unread;
    QByteArray m_hostErrors;
    QList<QJsonObject> m_events;
};
