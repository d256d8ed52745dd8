#include "tcpserver.h"

#include <modbus.h>

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>

namespace simulation {

namespace {

constexpr std::size_t maxClients = 64;

// A request: transaction (2), protocol (2, always 0), length of what follows (2), unit (1), function (1), ...
constexpr std::size_t lengthEnd = 6;
constexpr std::size_t shortestRest = 2;  ///< unit and function
constexpr std::size_t longestRest = 254; ///< unit and a PDU of 253 bytes

std::size_t wordAt(const Bytes& bytes, std::size_t offset)
{
    return static_cast<std::size_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

int boundPort(int socket)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

} // namespace

std::unique_ptr<TcpServer> TcpServer::listen(const QString& address, int port, RequestHandler handler,
                                             QString* error)
{
    const std::unique_ptr<modbus_t, decltype(&modbus_free)> context(
        modbus_new_tcp(address.toLatin1().constData(), port), &modbus_free);
    FileDescriptor listener(context ? modbus_tcp_listen(context.get(), int(maxClients)) : -1);
    if (listener.isOpen()) {
        const int bound = boundPort(listener.get());
        return std::unique_ptr<TcpServer>(new TcpServer(std::move(listener), bound, std::move(handler)));
    }
    if (errno == EADDRINUSE)
        *error = QStringLiteral("port %2 on %1 is in use: choose another --tcp port, or 0 for any")
                     .arg(address, QString::number(port));
    else
        *error =
            QStringLiteral("cannot listen on port %2 of %1: %3: choose another --tcp port or --bind address")
                .arg(address, QString::number(port),
                     QString::fromStdString(std::generic_category().message(errno)));
    return nullptr;
}

TcpServer::TcpServer(FileDescriptor listener, int port, RequestHandler handler)
    : m_listener(std::move(listener))
    , m_port(port)
    , m_handler(std::move(handler))
{}

void TcpServer::run(int stopFd)
{
    std::vector<pollfd> sources;
    for (;;) {
        sources.assign({{stopFd, POLLIN, 0}, {m_listener.get(), POLLIN, 0}});
        // A client that does not take its replies is not read from either.
        for (const Client& client : m_clients)
            sources.push_back({client.socket.get(), short(client.unsent.empty() ? POLLIN : POLLOUT), 0});
        if (::poll(sources.data(), sources.size(), -1) < 0)
            continue;
        if (sources[0].revents != 0)
            return;
        std::size_t index = 2;
        for (auto client = m_clients.begin(); client != m_clients.end(); ++index) {
            const bool isReady = sources[index].revents != 0;
            const bool stays = !isReady || (client->unsent.empty() ? receive(*client) : flush(*client));
            client = stays ? std::next(client) : m_clients.erase(client);
        }
        if (sources[1].revents != 0)
            accept();
    }
}

void TcpServer::accept()
{
    FileDescriptor socket(::accept4(m_listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket.isOpen() || m_clients.size() == maxClients)
        return;
    const int on = 1;
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    m_clients.push_back({std::move(socket), {}, {}});
}

/// Takes what has come and answers the requests in it; false when the client is gone or beyond help.
bool TcpServer::receive(Client& client)
{
    std::array<std::uint8_t, 4096> buffer{};
    const ssize_t count = ::recv(client.socket.get(), buffer.data(), buffer.size(), 0);
    if (count <= 0)
        return count < 0 && (errno == EAGAIN || errno == EINTR);
    client.received.insert(client.received.end(), buffer.begin(), buffer.begin() + count);
    return answerAll(client) && flush(client);
}

/// Answers every request that is there as a whole. False when a length makes no sense: where the next request
/// begins cannot be known then, so the connection ends.
bool TcpServer::answerAll(Client& client)
{
    Bytes& received = client.received;
    while (received.size() >= lengthEnd) {
        const std::size_t rest = wordAt(received, 4);
        if (rest < shortestRest || rest > longestRest)
            return false;
        if (received.size() < lengthEnd + rest)
            break;
        const auto end = received.begin() + static_cast<std::ptrdiff_t>(lengthEnd + rest);
        const Bytes request(received.begin(), end);
        received.erase(received.begin(), end);
        // Another protocol's message is passed over: its length is right, its content is not ours.
        if (wordAt(request, 2) != 0)
            continue;
        const Bytes reply = m_handler(request);
        client.unsent.insert(client.unsent.end(), reply.begin(), reply.end());
    }
    return true;
}

/// Sends what the client takes now; false when it is gone.
bool TcpServer::flush(Client& client)
{
    if (client.unsent.empty())
        return true;
    const ssize_t count =
        ::send(client.socket.get(), client.unsent.data(), client.unsent.size(), MSG_NOSIGNAL);
    if (count < 0)
        return errno == EAGAIN || errno == EINTR;
    client.unsent.erase(client.unsent.begin(), client.unsent.begin() + count);
    return true;
}

} // namespace simulation
