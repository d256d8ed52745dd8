#include "checkthread.h"

#include "driverentries.h"
#include "lineoutput.h"
#include "portmanage.h"
#include "serialport.h"
#include "unitcheck.h"

#include <fcntl.h>
#include <unistd.h>

CheckThread::CheckThread(const QString& unitName, const CheckSettings& settings,
                         const RunningPort& runningPort)
    : m_unitName(unitName)
    , m_settings(settings)
    , m_runningPort(runningPort)
{
    connect(this, &QThread::finished, this, &CheckThread::finish);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return; // the check runs all the same and says nothing but its result
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    ::fcntl(m_readEnd, F_SETFL, O_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &CheckThread::readLines);
}

CheckThread::~CheckThread()
{
    cancel();
    wait();
    m_notifier.reset();
    for (const int end : {m_readEnd, m_writeEnd}) {
        if (end >= 0)
            ::close(end);
    }
}

void CheckThread::cancel()
{
    m_isCancelled = true;
    requestInterruption(); // lines that nobody reads do not hold it up
    if (m_notifier)
        m_notifier->setEnabled(false);
}

void CheckThread::run()
{
    m_hasAnswered = m_settings.isTcp || !m_runningPort.manager ? runCheck() : runOnPort();
}

// The units' queries on this port wait for its lock meanwhile.
bool CheckThread::runOnPort()
{
    SerialPort* running = m_runningPort.manager->getPortHandle(m_runningPort.name);
    if (!running)
        return runCheck();
    running->Lock();
    const bool hasAnswered = runCheck();
    running->ReOpen(); // the check may have set the line to another speed
    running->UnLock();
    return hasAnswered;
}

bool CheckThread::runCheck()
{
    LineOutput output(m_writeEnd, [this] { return isInterruptionRequested(); });
    const DriverEntries driver;
    PortManage ports; // of this thread, without an event loop: its tick does not come in between
    if (!m_settings.isTcp) {
        // The settings to be tested are not in "serial.ini" yet.
        SerialPort* port = ports.getPortHandle(m_settings.portName);
        port->Lock();
        port->CommOpen(m_settings.portName, m_settings.lineSettings, m_settings.timeoutMs);
        port->UnLock();
    }
    return UnitCheck(m_unitName, m_settings, driver, ports, output,
                     [this] { return isInterruptionRequested(); })
        .run();
}

void CheckThread::readLines()
{
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::read(m_readEnd, buffer, sizeof buffer)) > 0)
        m_unread.append(buffer, int(count));
    int end = 0;
    // A slot may cancel the rest.
    while (!m_isCancelled && (end = m_unread.indexOf('\n')) >= 0) {
        const QString line = QString::fromUtf8(m_unread.left(end));
        m_unread.remove(0, end + 1);
        emit lineReady(line);
    }
}

void CheckThread::finish()
{
    readLines();
    m_notifier.reset();
    emit ended(m_hasAnswered);
}
