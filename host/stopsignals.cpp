#include "stopsignals.h"

#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <csignal>

#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int stoppingSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int signalStatusBase = 128; // how a shell reports a process that a signal ended

// A handler may only write to a descriptor; the event loop reads the other end.
int handlerEnd = -1;
int loopEnd = -1;
// Atomic, because two signals may run their handlers on two threads at once.
std::atomic<bool> isStopping{false};
static_assert(ATOMIC_BOOL_LOCK_FREE == 2, "a handler must not wait for a lock");

void handleSignal(int number)
{
    if (isStopping.exchange(true))
        ::_exit(signalStatusBase + number);
    const int interruptedErrno = errno;
    const char byte = 0;
    if (::write(handlerEnd, &byte, 1) != 1)
        ::_exit(signalStatusBase + number);
    errno = interruptedErrno;
}

bool isHangupIgnored()
{
    struct sigaction action = {};
    ::sigaction(SIGHUP, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

} // namespace

StopSignals::StopSignals(QObject* parent)
    : QObject(parent)
{
    int ends[2] = {};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        qFatal("no socket pair for the signal handler");
    handlerEnd = ends[0];
    loopEnd = ends[1];
    m_notifier = new QSocketNotifier(loopEnd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        m_notifier->setEnabled(false); // once is enough; the byte stays unread
        emit stopRequested();
    });

    struct sigaction action = {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : stoppingSignals) {
        if (number != SIGHUP || !isHangupIgnored()) // nohup is to be obeyed
            ::sigaction(number, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

bool StopSignals::isPending()
{
    return isStopping;
}

StopSignals::~StopSignals()
{
    for (const int number : stoppingSignals) {
        if (number != SIGHUP || !isHangupIgnored())
            std::signal(number, SIG_DFL);
    }
    ::close(handlerEnd);
    ::close(loopEnd);
}
