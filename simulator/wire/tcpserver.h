#pragma once

#include "outageswitch.h"
#include "tcpclient.h"

#include <QString>

#include <list>
#include <memory>

namespace simulation {

/// Carries Modbus TCP requests of several clients to the units and their replies back.
class TcpServer
{
public:
    /// Listens on an IPv4 address; port 0 takes any free one. Null on failure, with one line in `error` that
    /// names the port and what to do.
    static std::unique_ptr<TcpServer> listen(const QString& address, int port, RequestHandler handler,
                                             QString* error);

    int port() const { return m_port; }

    /// Refused: no listener, and every connection closed. BlackHole: connections are made and kept by the
    /// system alone; what came meanwhile is lost when it is over.
    OutageSwitch& outages() { return m_outages; }

    /// Serves clients until `stopFd` is readable.
    void run(int stopFd);

private:
    using Time = OutageSwitch::Time;

    TcpServer(const QString& address, FileDescriptor listener, RequestHandler handler);
    void follow(LineState state);
    void holdPort();
    bool reopen();
    void acceptAll();
    std::optional<Time> nextEvent() const;
    std::vector<pollfd> sources(int stopFd) const;
    void serveClients(const std::vector<pollfd>& sources);

    const QString m_address;
    const RequestHandler m_handler;
    OutageSwitch m_outages;
    LineState m_state = LineState::Up;
    FileDescriptor m_listener; ///< while refused, a mere holder of the port
    const int m_port;
    bool m_reopenFailed = false; ///< told already
    std::list<TcpClient> m_clients;
};

} // namespace simulation
