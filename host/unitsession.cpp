#include "unitsession.h"

#include "collectthread.h"
#include "eventtype.h"
#include "pollthread.h"

#include <climits>

UnitSession::UnitSession(const QString& name, std::unique_ptr<CollectThread> collector, Cycles cycles)
    : m_name(name)
    , m_collector(std::move(collector))
{
    // Before any settings: it is the group that they are read from.
    m_collector->m_deviceName = name;
    // An automatic connection to the main thread does as well, for a host whose event loop never blocks.
    connect(m_collector.get(), &CollectThread::postDEvent, this, &UnitSession::queueEvent,
            Qt::DirectConnection);
    connect(this, &UnitSession::eventsWaiting, this, &UnitSession::deliverEvents, Qt::QueuedConnection);
    if (cycles == Cycles::Polled)
        m_pollThread = std::make_unique<PollThread>(m_collector.get());
}

UnitSession::~UnitSession()
{
    requestStop();
    waitStopped(ULONG_MAX);
}

void UnitSession::loadConfig()
{
    m_collector->loadConfig();
}

void UnitSession::start()
{
    if (m_pollThread)
        m_pollThread->start();
    else
        m_collector->start();
}

void UnitSession::requestStop()
{
    if (m_pollThread)
        m_pollThread->requestStop();
    // Both are needed: the interruption ends a wait inside a cycle, quit() the event loop between cycles.
    m_collector->requestInterruption();
    m_collector->quit();
}

bool UnitSession::waitStopped(unsigned long timeoutMs)
{
    QThread* thread = m_collector.get();
    if (m_pollThread)
        thread = m_pollThread.get();
    if (!thread->wait(timeoutMs))
        return false;
    deliverEvents();
    return true;
}

// On the thread of the cycle, or that of the pages for what they ask for.
void UnitSession::queueEvent(int type, const QVariantMap& record)
{
    // The count belongs to the cycle, and values come from there only.
    const int failedCycles = type == EventType::Data ? m_collector->m_failureCount : 0;
    if (m_events.append({type, record, failedCycles}))
        emit eventsWaiting();
}

void UnitSession::deliverEvents()
{
    const QVector<UnitEvent> events = m_events.takeAll();
    for (const UnitEvent& event : events) {
        m_state.apply(event.type, event.record, event.failedCycles);
        emit eventReceived(event.type, event.record);
    }
}
