#include "vek5client.h"

#include "driverentry.h"
#include "eventrecord.h"
#include "portaccess.h"
#include "portmanage.h"
#include "serialport.h"

#include <QTimer>

#include <ctime>

bool vek5Client::isStopRequested() const
{
    // A cycle may run on a thread of the host's, which then is the one that is asked.
    return m_isStopping || isInterruptionRequested() || QThread::currentThread()->isInterruptionRequested();
}

void vek5Client::run()
{
    {
        const QMutexLocker locker(&m_pollLock);
        if (m_interval == 0)
            m_interval = 1;
        m_isRunActive = true;
    }
    QTimer timer;
    timer.setInterval(100);
    connect(&timer, &QTimer::timeout, this, &vek5Client::threadTimer, Qt::DirectConnection);
    QTimer::singleShot(0, &timer, SLOT(start()));
    timer.start();
    if (!isStopRequested())
        exec();
    timer.stop();

    const CycleGateLocker gate(m_gate);
    m_tcp.close(); // here, because the socket belongs to this thread
    const QMutexLocker locker(&m_pollLock);
    m_isRunActive = false;
    m_cycleEnded.wakeAll();
}

void vek5Client::poll()
{
    if (m_gate.isInside())
        return;
    const bool isCommandWaiting = commandCount() > 0;
    QMutexLocker locker(&m_pollLock);
    const qint64 nowS = std::time(nullptr);
    if (m_isStopping || (nowS < m_nextPollTimeS && !isCommandWaiting))
        return;
    m_nextPollTimeS = nowS + m_interval;
    ++m_pollsUnderWay;
    m_workState = 1;
    pollCycle(locker);
    // From here to the end the lock is held: the destructor may wait for it, and nothing is touched after.
    if (--m_pollsUnderWay == 0) {
        m_workState = 0;
        m_pollEnded.wakeAll();
    }
}

// Sees one cycle through, on the thread of the collector while that runs: it owns the timer and the socket,
// so the cycle is left to its next tick.
void vek5Client::pollCycle(QMutexLocker& locker)
{
    const quint64 cycle = m_cyclesBegun + 1;
    while (m_isRunActive && m_cyclesEnded < cycle)
        m_cycleEnded.wait(&m_pollLock);
    if (m_cyclesEnded >= cycle)
        return;
    locker.unlock();
    threadTimer();
    locker.relock();
}

// A call of poll() on another thread still uses the collector until it is counted out.
void vek5Client::waitForPolls()
{
    const QMutexLocker locker(&m_pollLock);
    while (m_pollsUnderWay > 0)
        m_pollEnded.wait(&m_pollLock);
}

void vek5Client::threadTimer()
{
    const CycleGateLocker gate(m_gate);
    if (!gate.isEntered() || m_isStopping)
        return;
    {
        const QMutexLocker locker(&m_pollLock);
        ++m_cyclesBegun;
    }
    runCycle();
    const QMutexLocker locker(&m_pollLock);
    m_cyclesEnded = m_cyclesBegun;
    m_cycleEnded.wakeAll();
}

void vek5Client::runCycle()
{
    ++m_tickCount;
    if (commandCount() > 0)
        m_tickCount = 0;
    if (!prepareConnection())
        return; // asked to stop: commands stay queued, and nothing is said about the unit
    check_set_command();
    QMap<QString, QVariant> record = eventrecord::begin(m_deviceName, m_protocol, m_portName);
    if (queryUnit())
        takeAnswer(record);
    else
        takeFailure(record);
    reportData();
}

bool vek5Client::prepareConnection()
{
    if (m_commType != 1)
        return true;
    return m_tcp.ensureConnected(m_ipAddress, m_tcpPort, [this] { return isStopRequested(); });
}

// Calls one of the driver's entries with a handle of the unit's port; nothing without a port. The lock of a
// local port is held for the whole call, so that no other unit's frames come between request and reply.
std::optional<int> vek5Client::callDriver(const std::function<int(PortHandle*)>& call)
{
    if (!isLocalPort()) {
        PortHandle handle{m_tcp.device(), TcpCommRead, TcpCommWrite};
        return call(&handle);
    }
    SerialPort* port = serialPort();
    if (!port)
        return std::nullopt;
    PortHandle handle{static_cast<QIODevice*>(port), CommRead, CommWrite};
    port->Lock();
    const int result = call(&handle);
    port->UnLock();
    return result;
}

bool vek5Client::queryUnit()
{
    const DriverQuery query = m_driver ? m_driver->query() : nullptr;
    if (!query)
        return false;
    const std::optional<int> result = callDriver(
        [&](PortHandle* handle) { return query(handle, m_deviceAddress, vek5DataProce, &m_driverContext); });
    return result.value_or(0) != 0;
}

void vek5Client::takeAnswer(QMap<QString, QVariant> record)
{
    m_failureCount = 0;
    if (m_commState == 0)
        return;
    m_commState = 0;
    record.insert(QStringLiteral("desc"), m_deviceName);
    record.insert(QStringLiteral("state"), 0);
    emit postDEvent(eventrecord::Restored, record);
    emit postDEvent(eventrecord::Summary, record);
}

void vek5Client::takeFailure(QMap<QString, QVariant> record)
{
    ++m_failureCount;
    if (m_failureCount < m_retryLimit)
        return;
    // The count is left as it is after a loss, so that every further failure reopens the port: deliberate, a
    // unit behind a re-plugged adapter comes back that way.
    if (isLocalPort() && !m_holdReopen)
        setPort(m_portName, m_portSettings);
    if (m_commState == 1)
        return;
    record.insert(QStringLiteral("lost"), 1);
    record.insert(QStringLiteral("state"), 1);
    record.insert(QStringLiteral("desc"), m_deviceName);
    emit postDEvent(eventrecord::Lost, record);
    m_commState = 1;
    emit postDEvent(eventrecord::Summary, record);
}

void vek5Client::parseData(int id, float value)
{
    m_points.store(id, value);
}
