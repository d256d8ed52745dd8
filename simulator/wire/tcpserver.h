#pragma once

#include "bytes.h"
#include "filedescriptor.h"

#include <QString>

#include <list>
#include <memory>

namespace simulation {

/// Carries Modbus TCP requests of several clients to the units and their replies back. It looks at no more
/// of a request than is needed to find its end.
class TcpServer
{
public:
    /// Listens on an IPv4 address; port 0 takes any free one. Null on failure, with one line in `error` that
    /// names the port and what to do.
    static std::unique_ptr<TcpServer> listen(const QString& address, int port, RequestHandler handler,
                                             QString* error);

    int port() const { return m_port; }

    /// Serves clients until `stopFd` is readable.
    void run(int stopFd);

private:
    struct Client
    {
        FileDescriptor socket;
        Bytes received;
        Bytes unsent;
    };

    TcpServer(FileDescriptor listener, int port, RequestHandler handler);
    void accept();
    bool receive(Client& client);
    bool answerAll(Client& client);
    static bool flush(Client& client);

    const FileDescriptor m_listener;
    const int m_port;
    const RequestHandler m_handler;
    std::list<Client> m_clients;
};

} // namespace simulation
