#pragma once

#include <QMutex>
#include <QVariantMap>
#include <QVector>

/// One event of a unit, as its collector emitted it.
struct UnitEvent
{
    int type;
    QVariantMap record;
    int failedCycles = 0; ///< in a row, up to this event; 0 says that its values are fresh
};

/// The events between a unit's cycle and the main thread. Any thread.
///
/// A collector reports all values of its unit up to ten times a second. While the main thread cannot take
/// them, because whoever reads its output has stopped to, they would fill the memory: once many events wait,
/// values that newer ones of the unit have overtaken are dropped. Other events never are.
class EventQueue
{
public:
    static constexpr int fullLength = 100;

    /// Appends an event. True when it is the only one, so that the taker has to be woken.
    bool append(const UnitEvent& event);
    /// Takes all events, oldest first.
    QVector<UnitEvent> takeAll();

private:
    QMutex m_lock;
    QVector<UnitEvent> m_events;
};
