#include "eventqueue.h"

#include "eventtype.h"

#include <QMutexLocker>

#include <algorithm>

bool EventQueue::append(const UnitEvent& event)
{
    const QMutexLocker locker(&m_lock);
    if (event.type == EventType::Data && m_events.size() >= fullLength) {
        const auto overtaken = std::find_if(m_events.rbegin(), m_events.rend(), [](const UnitEvent& waiting) {
            return waiting.type == EventType::Data;
        });
        if (overtaken != m_events.rend())
            m_events.erase(std::prev(overtaken.base()));
    }
    m_events.append(event);
    return m_events.size() == 1;
}

QVector<UnitEvent> EventQueue::takeAll()
{
    const QMutexLocker locker(&m_lock);
    QVector<UnitEvent> events;
    events.swap(m_events);
    return events;
}
