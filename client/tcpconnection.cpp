#include "tcpconnection.h"

#include <QHostInfo>
#include <QThread>
#include <QtDebug>

#include <sys/socket.h>

namespace {

constexpr int pauseMs = 5000;
constexpr int connectTimeoutMs = 30000;
constexpr int readBufferBytes = 1024;
constexpr int maxPort = 65535;

QList<QHostAddress> addressesOf(const QString& host)
{
    const QHostAddress address(host);
    return address.isNull() ? QHostInfo::fromName(host).addresses() : QList<QHostAddress>{address};
}

} // namespace

TcpConnection::~TcpConnection()
{
    close();
}

bool TcpConnection::ensureConnected(const QString& host, int port,
                                    const tcpdial::StopRequested& stopRequested)
{
    if (m_socket && m_socket->thread() != QThread::currentThread())
        close(); // cycles moved to another thread, and a socket cannot
    if (!m_socket) {
        m_socket = new QTcpSocket;
        m_socket->setReadBufferSize(readBufferBytes);
    }
    if (m_socket->state() != QAbstractSocket::UnconnectedState &&
        m_socket->state() != QAbstractSocket::ClosingState)
        return true;

    if (!tcpdial::pause(pauseMs, stopRequested))
        return false;
    m_socket->abort(); // what a closing socket still held
    if (port < 1 || port > maxPort) {
        qDebug("tcp port %d is not 1 to %d", port, maxPort);
        return true;
    }
    // The socket's own waitForConnected() can be neither ended early nor called in slices.
    const int descriptor =
        tcpdial::connectToAny(addressesOf(host), static_cast<quint16>(port), connectTimeoutMs, stopRequested);
    if (descriptor != -1)
        m_socket->setSocketDescriptor(descriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite);
    return !stopRequested();
}

void TcpConnection::close()
{
    QTcpSocket* socket = m_socket;
    m_socket = nullptr;
    if (!socket)
        return;
    const QThread* owner = socket->thread();
    if (!owner || owner == QThread::currentThread() || owner->isFinished()) {
        delete socket;
        return;
    }
    // Its thread lives, and it alone may take the socket's notifiers down. The connection ends now all the
    // same: many units serve only one client.
    if (socket->socketDescriptor() != -1)
        ::shutdown(static_cast<int>(socket->socketDescriptor()), SHUT_RDWR);
    socket->deleteLater();
}
