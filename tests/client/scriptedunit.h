#pragma once

#include "porthandle.h"
#include "text.h"

#include <QByteArrayList>
#include <QMap>
#include <QVariant>
#include <QVector>

#include <atomic>
#include <functional>

class vek5Client;

/// What the scripted driver does; one for the program. Set it up while no cycle runs.
struct ScriptedUnit
{
    void reset();

    bool answers = true;
    int controlResult = 0;
    QMap<int, float> points;               ///< handed over by every answered query
    std::function<void(PortHandle*)> hook; ///< called inside every query
    std::atomic<int> queries{0};
    QByteArrayList commands; ///< texts that Control got
};

ScriptedUnit& scriptedUnit();

/// Collects the events of a collector as they are emitted.
class EventLog
{
public:
    explicit EventLog(vek5Client* collector);
    /// The types in order, 2007 left out unless asked for.
    QVector<int> types(bool withData = false) const;
    /// The record of the last event of this type.
    QVariantMap last(int type) const;
    void clear() { m_events.clear(); }

private:
    QVector<QPair<int, QVariantMap>> m_events;
};

/// Writes the dev.ini below the test's own folder; lines of the group of one unit.
void writeConfig(const Text& unitName, const Text& lines);
/// Makes a collector of these lines of configuration the unit "A". The communication type 2 is neither a
/// serial line nor TCP: the driver is called with no device, which makes cycles testable without either.
void configure(vek5Client& collector, const Text& lines);
