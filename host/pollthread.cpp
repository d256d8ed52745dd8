#include "pollthread.h"

#include "collectthread.h"

namespace {
// Short, so that a command does not wait: the collector itself keeps to the unit's interval.
constexpr int pauseMs = 100;
} // namespace

PollThread::PollThread(CollectThread* collector)
    : m_collector(collector)
{}

void PollThread::requestStop()
{
    requestInterruption(); // ends a wait inside a cycle
    m_stop.release();
}

void PollThread::run()
{
    while (!m_stop.tryAcquire(1, pauseMs))
        m_collector->poll();
}
