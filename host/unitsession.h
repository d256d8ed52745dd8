#pragma once

#include "eventqueue.h"
#include "unitstate.h"

#include <QObject>

#include <memory>

class CollectThread;
class PollThread;

/// One unit while the host runs: its collector, and what is known of the unit. Main thread.
///
/// To stop several units in the time of one, call requestStop() for all before waitStopped() for any.
class UnitSession : public QObject
{
    Q_OBJECT

public:
    enum class Cycles
    {
        OwnThread, ///< the collector's thread runs them
        Polled     ///< a thread of the host asks for them
    };

    /// Takes the collector over and names it.
    UnitSession(const QString& name, std::unique_ptr<CollectThread> collector, Cycles cycles);
    /// Stops the unit and waits for it, then deletes the collector.
    ~UnitSession() override;

    QString name() const { return m_name; }
    const UnitState& state() const { return m_state; }
    CollectThread& collector() { return *m_collector; }

    /// Has the collector read its settings, which may open its port and so take as long as the device likes.
    /// Before start(), for all units before the first one starts; any thread, one at a time.
    void loadConfig();
    void start();
    /// Asks the unit to end after the cycle that runs; returns at once.
    void requestStop();
    /// Waits until no cycle runs any more, at most timeoutMs; true when that is so. Events that were still
    /// under way are delivered before it returns true.
    bool waitStopped(unsigned long timeoutMs);

signals:
    /// One event of the unit, after state() has taken it.
    void eventReceived(int type, const QVariantMap& record);
    /// For the session itself: m_events is no longer empty. Emitted on the thread of the cycle.
    void eventsWaiting();

private:
    void queueEvent(int type, const QVariantMap& record);
    void deliverEvents();

    QString m_name;
    EventQueue m_events; // outlives the collector, which fills it
    std::unique_ptr<CollectThread> m_collector;
    std::unique_ptr<PollThread> m_pollThread; // null when the collector's own thread runs the cycles
    UnitState m_state;
};
