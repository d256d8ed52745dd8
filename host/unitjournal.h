#pragma once

#include "unitstate.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QObject>
#include <QStringList>

class CollectThread;
class Journal;

/// When the next row of a unit's data log is due: at steps of the interval from the first row on, however
/// irregular the reports come. A plain value without a clock.
class LogSchedule
{
public:
    explicit LogSchedule(qint64 intervalMs)
        : m_intervalMs(intervalMs)
        , m_dueMs(-intervalMs)
    {}

    /// True when a row is due at nowMs, which starts at 0 or later and never goes back.
    bool take(qint64 nowMs);

private:
    qint64 m_intervalMs;
    qint64 m_dueMs;
};

/// Hands over to the journal what one unit tells, when it is told: on the thread of the unit's cycle, so
/// that an output which nobody reads holds up no record.
class UnitJournal : public QObject
{
    Q_OBJECT

public:
    /// Follows the collector from now on; make it before the collector starts. The journal, and this object,
    /// must outlive the collector. eventTexts are the plugin's, by event code.
    UnitJournal(const QString& unitName, CollectThread& collector, const QStringList& eventTexts,
                int logIntervalS, Journal& journal);

private:
    void take(int type, const QVariantMap& record);
    void takeData(qint64 utcMs);

    const QString m_unitName;
    CollectThread& m_collector;
    const QStringList m_eventTexts;
    Journal& m_journal;
    QElapsedTimer m_clock;
    QMutex m_lock; // requests of the unit's pages come from the main thread
    UnitState m_state;
    LogSchedule m_schedule;
};
