#pragma once

#include "journalrecord.h"

#include <QMutex>

#include <deque>
#include <vector>

/// The records that wait to be written. Any thread.
///
/// Bounded, so that a disk that stays full never fills the memory as well: the oldest are dropped, and rows
/// of the data log, of which there are many, never displace an event.
class RecordQueue
{
public:
    /// Of events and of log rows each: some 30 MB together, days of an ordinary unit.
    static constexpr size_t defaultLimit = 50000;

    explicit RecordQueue(size_t limitPerKind = defaultLimit)
        : m_limit(limitPerKind)
    {}

    void append(JournalRecord record);
    /// Takes up to maxCount records, the events first, in the order in which they came.
    std::vector<JournalRecord> take(size_t maxCount);

    size_t size() const;
    /// How many were dropped since the last call.
    size_t takeDroppedCount();

private:
    const size_t m_limit;
    mutable QMutex m_lock;
    std::deque<JournalRecord> m_events; // and periods
    std::deque<JournalRecord> m_logRows;
    size_t m_droppedCount = 0;
};
