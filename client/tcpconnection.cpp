#include "tcpconnection.h"

#include <QEventLoop>
#include <QNetworkProxy>
#include <QThread>
#include <QTimer>

namespace {

constexpr int pauseMs = 5000;
constexpr int connectTimeoutMs = 30000;
constexpr int sliceMs = 50; // how soon a request to stop is seen
constexpr int readBufferBytes = 1024;

// How a wait ended. 0 is what a loop returns when its thread is told to quit.
enum Outcome
{
    ThreadQuit = 0,
    Stopped,
    TimedOut,
    Decided
};

// Waits for the time, or until the loop is ended from elsewhere. False when asked to stop, or when the
// thread was told to quit, which ends every loop of it.
bool waitFor(QEventLoop& loop, int timeoutMs, const TcpConnection::StopRequested& stopRequested)
{
    QTimer slice;
    QObject::connect(&slice, &QTimer::timeout, &loop, [&] {
        if (stopRequested())
            loop.exit(Stopped);
    });
    slice.start(sliceMs);
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, &loop, [&] { loop.exit(TimedOut); });
    limit.start(timeoutMs);
    const int outcome = stopRequested() ? Stopped : loop.exec(QEventLoop::ExcludeUserInputEvents);
    return outcome == TimedOut || outcome == Decided;
}

QTcpSocket* newSocket()
{
    auto* socket = new QTcpSocket;
    socket->setReadBufferSize(readBufferBytes);
    // A unit stands on the local network: a proxy meant for browsers must not get its frames.
    socket->setProxy(QNetworkProxy::NoProxy);
    return socket;
}

} // namespace

TcpConnection::~TcpConnection()
{
    close();
}

bool TcpConnection::ensureConnected(const QString& host, int port, const StopRequested& stopRequested)
{
    if (m_socket && m_socket->thread() != QThread::currentThread())
        close(); // cycles moved to another thread, and a socket cannot
    if (!m_socket)
        m_socket = newSocket();
    if (m_socket->state() != QAbstractSocket::UnconnectedState &&
        m_socket->state() != QAbstractSocket::ClosingState)
        return true;

    QEventLoop pause;
    if (!waitFor(pause, pauseMs, stopRequested))
        return false;
    m_socket->abort(); // a closing socket refuses to connect
    m_socket->connectToHost(host, static_cast<quint16>(port), QIODevice::ReadWrite,
                            QAbstractSocket::AnyIPProtocol);
    return waitForConnected(stopRequested);
}

// waitForConnected() of the socket can be neither ended early nor called in slices, for it gives the attempt
// up when its time is over. A loop can; ticks that it delivers meanwhile find the cycle's gate taken.
bool TcpConnection::waitForConnected(const StopRequested& stopRequested)
{
    const auto isDecided = [this] {
        return m_socket->state() == QAbstractSocket::ConnectedState ||
               m_socket->state() == QAbstractSocket::UnconnectedState;
    };
    QEventLoop loop;
    QObject::connect(m_socket, &QTcpSocket::stateChanged, &loop, [&] {
        if (isDecided())
            loop.exit(Decided);
    });
    if (!isDecided() && !waitFor(loop, connectTimeoutMs, stopRequested)) {
        m_socket->abort();
        return false;
    }
    if (m_socket->state() != QAbstractSocket::ConnectedState)
        m_socket->abort();
    return true;
}

void TcpConnection::close()
{
    QTcpSocket* socket = m_socket;
    m_socket = nullptr;
    if (!socket)
        return;
    const QThread* owner = socket->thread();
    if (!owner || owner == QThread::currentThread() || owner->isFinished())
        delete socket;
    else
        socket->deleteLater(); // its thread lives: it alone may take its notifiers down
}
