#pragma once

#include "tcpdial.h"

#include <QString>
#include <QTcpSocket>

/// The TCP connection of one collector. Its socket belongs to the thread that called ensureConnected; every
/// call but close() is made on that thread.
class TcpConnection
{
public:
    TcpConnection() = default;
    ~TcpConnection();

    /// Connects unless connected: pauses 5 s, so that a unit that refuses is not flooded, then waits up to
    /// 30 s. Whether that succeeded shows at the next transfer. False only when asked to stop, with nothing
    /// left pending. Blocks without running an event loop: whoever called must not be called back meanwhile.
    bool ensureConnected(const QString& host, int port, const tcpdial::StopRequested& stopRequested);

    /// The socket, or null before the first ensureConnected.
    QIODevice* device() const { return m_socket; }

    /// Ends the connection. From any thread, while no other call runs.
    void close();

private:
    Q_DISABLE_COPY(TcpConnection)

    QTcpSocket* m_socket = nullptr;
};
