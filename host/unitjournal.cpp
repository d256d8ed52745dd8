#include "unitjournal.h"

#include "collectthread.h"
#include "eventtype.h"
#include "journal.h"
#include "journalevent.h"

#include <QDateTime>
#include <QMutexLocker>

namespace {
constexpr qint64 msPerSecond = 1000;
}

bool LogSchedule::take(qint64 nowMs)
{
    if (nowMs < m_dueMs)
        return false;
    m_dueMs += m_intervalMs;
    if (m_dueMs <= nowMs) // the unit was silent meanwhile, or this is its first row
        m_dueMs = nowMs + m_intervalMs;
    return true;
}

UnitJournal::UnitJournal(const QString& unitName, CollectThread& collector, const QStringList& eventTexts,
                         int logIntervalS, Journal& journal)
    : m_unitName(unitName)
    , m_collector(collector)
    , m_eventTexts(eventTexts)
    , m_journal(journal)
    , m_schedule(logIntervalS * msPerSecond)
{
    m_clock.start();
    connect(&collector, &CollectThread::postDEvent, this, &UnitJournal::take, Qt::DirectConnection);
}

void UnitJournal::take(int type, const QVariantMap& record)
{
    const QMutexLocker locker(&m_lock);
    const qint64 utcMs = QDateTime::currentMSecsSinceEpoch();
    // The count belongs to the cycle, and values come from there only.
    m_state.apply(type, record, type == EventType::Data ? m_collector.m_failureCount : 0);
    if (const auto event = journalevent::from(utcMs, m_unitName, type, record, m_eventTexts))
        m_journal.append(*event);
    if (type == EventType::Communicating)
        m_journal.beginPeriod(m_unitName, utcMs);
    else if (type == EventType::CommunicationLost)
        m_journal.endPeriod(m_unitName, utcMs, PeriodEnding::Lost);
    else if (type == EventType::Data)
        takeData(utcMs);
}

// Values of a unit that is lost, or was not heard yet, are none.
void UnitJournal::takeData(qint64 utcMs)
{
    if (m_state.liveData().isEmpty() || !m_schedule.take(m_clock.elapsed()))
        return;
    const QStringList values = m_collector.changeLogData(m_state.liveData());
    if (!values.isEmpty()) // a plugin may keep no data log
        m_journal.append(LogRow{utcMs, m_unitName, values});
}
