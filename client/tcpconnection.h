#pragma once

#include <QString>
#include <QTcpSocket>

#include <functional>

/// The TCP connection of one collector. Its socket belongs to the thread that called ensureConnected; every
/// call but close() is made on that thread.
class TcpConnection
{
public:
    /// Asked many times a second during a wait; true ends the wait.
    using StopRequested = std::function<bool()>;

    TcpConnection() = default;
    ~TcpConnection();

    /// Connects unless connected: pauses 5 s, so that a unit that refuses is not flooded, then waits up to
    /// 30 s. Whether that succeeded shows at the next transfer. False only when asked to stop, with nothing
    /// left pending.
    bool ensureConnected(const QString& host, int port, const StopRequested& stopRequested);

    /// The socket, or null before the first ensureConnected.
    QIODevice* device() const { return m_socket; }

    /// Ends the connection. From any thread, while no other call runs.
    void close();

private:
    Q_DISABLE_COPY(TcpConnection)

    bool waitForConnected(const StopRequested& stopRequested);

    QTcpSocket* m_socket = nullptr;
};
