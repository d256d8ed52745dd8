#pragma once

#include "porthandle.h"

#include <QByteArrayList>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>
#include <QVector>

#include <atomic>
#include <functional>

class vek5Client;

/// What the scripted driver does; one for the program. Set it up while no cycle runs.
struct ScriptedUnit
{
    bool answers = true;
    int controlResult = 0;
    QMap<int, float> points;               ///< handed over by every answered query
    std::function<void(PortHandle*)> hook; ///< called inside every query
    std::atomic<int> queries{0};
    std::function<void(const QByteArray&)> onControl; ///< called inside every command
    QByteArrayList commands;                          ///< texts that Control got
};

ScriptedUnit& scriptedUnit();

/// One event as the host gets it.
struct SeenEvent
{
    int type;
    QMap<QString, QVariant> record;
};

/// Collects the events of a collector as they are emitted.
class EventLog
{
public:
    explicit EventLog(vek5Client* collector);
    /// The types in order, 2007 left out unless asked for.
    QVector<int> types(bool withData = false) const;
    const SeenEvent& last(int type) const;
    void clear() { m_events.clear(); }

private:
    QList<SeenEvent> m_events;
};

/// Writes the dev.ini below the test's own folder; lines of the group of one unit.
void writeConfig(const QString& unitName, const QStringList& lines);
