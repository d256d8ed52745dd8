#include "cyclegate.h"

#include <QThread>

bool CycleGate::isInside() const
{
    return m_owner.load(std::memory_order_relaxed) == QThread::currentThreadId();
}

bool CycleGate::enter()
{
    if (isInside())
        return false;
    m_mutex.lock();
    m_owner.store(QThread::currentThreadId(), std::memory_order_relaxed);
    return true;
}

void CycleGate::leave()
{
    m_owner.store(nullptr, std::memory_order_relaxed);
    m_mutex.unlock();
}
