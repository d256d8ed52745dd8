#include "recordqueue.h"

#include <QMutexLocker>

#include <utility>

void RecordQueue::append(JournalRecord record)
{
    const QMutexLocker locker(&m_lock);
    auto& queue = std::holds_alternative<LogRow>(record) ? m_logRows : m_events;
    if (queue.size() >= m_limit) {
        queue.pop_front();
        ++m_droppedCount;
    }
    queue.push_back(std::move(record));
}

std::vector<JournalRecord> RecordQueue::take(size_t maxCount)
{
    const QMutexLocker locker(&m_lock);
    std::vector<JournalRecord> records;
    for (auto* queue : {&m_events, &m_logRows}) {
        while (!queue->empty() && records.size() < maxCount) {
            records.push_back(std::move(queue->front()));
            queue->pop_front();
        }
    }
    return records;
}

size_t RecordQueue::size() const
{
    const QMutexLocker locker(&m_lock);
    return m_events.size() + m_logRows.size();
}

size_t RecordQueue::takeDroppedCount()
{
    const QMutexLocker locker(&m_lock);
    return std::exchange(m_droppedCount, 0);
}
