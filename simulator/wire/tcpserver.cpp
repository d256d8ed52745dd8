#include "tcpserver.h"

#include "deadline.h"

#include <modbus.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace simulation {

namespace {

constexpr std::size_t maxClients = 64;
constexpr std::chrono::seconds reopenPeriod{1};

// The order of the sources that the server waits for.
constexpr std::size_t stopIndex = 0;
constexpr std::size_t noticeIndex = 1;
constexpr std::size_t listenerIndex = 2;
constexpr std::size_t firstClientIndex = 3;

int boundPort(int socket)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

FileDescriptor openListener(const QString& address, int port)
{
    const std::unique_ptr<modbus_t, decltype(&modbus_free)> context(
        modbus_new_tcp(address.toLatin1().constData(), port), &modbus_free);
    FileDescriptor listener(context ? modbus_tcp_listen(context.get(), int(maxClients)) : -1);
    // A client that is gone before it is accepted must not keep the others waiting.
    if (listener.isOpen())
        ::fcntl(listener.get(), F_SETFL, O_NONBLOCK);
    return listener;
}

QString reasonText(const QString& address, int port)
{
    const int systemError = errno;
    if (systemError == EADDRINUSE)
        return QStringLiteral("port %2 on %1 is in use: choose another --tcp port, or 0 for any")
            .arg(address, QString::number(port));
    return QStringLiteral("cannot listen on port %2 of %1: %3: choose another --tcp port or --bind address")
        .arg(address, QString::number(port),
             QString::fromStdString(std::generic_category().message(systemError)));
}

} // namespace

std::unique_ptr<TcpServer> TcpServer::listen(const QString& address, int port, RequestHandler handler,
                                             QString* error)
{
    FileDescriptor listener = openListener(address, port);
    if (listener.isOpen())
        return std::unique_ptr<TcpServer>(new TcpServer(address, std::move(listener), std::move(handler)));
    *error = reasonText(address, port);
    return nullptr;
}

TcpServer::TcpServer(const QString& address, FileDescriptor listener, RequestHandler handler)
    : m_address(address)
    , m_handler(std::move(handler))
    , m_listener(std::move(listener))
    , m_port(boundPort(m_listener.get()))
{}

void TcpServer::run(int stopFd)
{
    for (;;) {
        follow(m_outages.state(std::chrono::steady_clock::now()));
        std::vector<pollfd> ready = sources(stopFd);
        if (pollUntil(ready, nextEvent()) < 0)
            continue;
        if (ready[stopIndex].revents != 0)
            return;
        serveClients(ready);
        if (ready[listenerIndex].revents != 0)
            acceptAll();
    }
}

std::optional<TcpServer::Time> TcpServer::nextEvent() const
{
    OptionalTime next = m_outages.end();
    for (const TcpClient& client : m_clients)
        next = earlier(next, client.nextSend());
    return next;
}

/// During an outage the system serves the connections, without us.
std::vector<pollfd> TcpServer::sources(int stopFd) const
{
    const bool isUp = m_state == LineState::Up;
    std::vector<pollfd> sources(firstClientIndex);
    sources[stopIndex] = {stopFd, POLLIN, 0};
    sources[noticeIndex] = {m_outages.notice(), POLLIN, 0};
    sources[listenerIndex] = {isUp ? m_listener.get() : -1, POLLIN, 0};
    if (isUp) {
        for (const TcpClient& client : m_clients)
            sources.push_back(client.source());
    }
    return sources;
}

void TcpServer::serveClients(const std::vector<pollfd>& sources)
{
    if (m_state != LineState::Up)
        return;
    std::size_t index = firstClientIndex;
    for (auto client = m_clients.begin(); client != m_clients.end(); ++index) {
        const bool isServed = sources[index].revents == 0 || client->serve(m_handler);
        const bool stays = isServed && client->sendDue(std::chrono::steady_clock::now());
        client = stays ? std::next(client) : m_clients.erase(client);
    }
}

void TcpServer::acceptAll()
{
    for (;;) {
        FileDescriptor socket(::accept4(m_listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket.isOpen())
            return;
        if (m_clients.size() < maxClients)
            m_clients.emplace_back(std::move(socket));
    }
}

/// Does what the change from the present state to this one takes.
void TcpServer::follow(LineState state)
{
    if (state == m_state)
        return;
    if (m_state == LineState::Refused && !reopen())
        return;
    if (m_state == LineState::BlackHole)
        acceptAll();
    if (state == LineState::Refused) {
        m_clients.clear();
        holdPort();
    }
    for (TcpClient& client : m_clients)
        client.loseAll();
    m_state = state;
}

/// Ends listening, but leaves the port to nobody else: without a listener connections are refused.
void TcpServer::holdPort()
{
    m_listener = FileDescriptor();
    FileDescriptor holder(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    ::setsockopt(holder.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(m_port));
    ::inet_pton(AF_INET, m_address.toLatin1().constData(), &address.sin_addr);
    if (::bind(holder.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        m_listener = std::move(holder);
}

/// False when the port cannot be had: it is tried again in a while.
bool TcpServer::reopen()
{
    FileDescriptor listener = openListener(m_address, m_port);
    if (listener.isOpen()) {
        m_listener = std::move(listener);
        m_reopenFailed = false;
        return true;
    }
    if (!m_reopenFailed)
        std::fprintf(stderr, "ups-sim: %s (trying again)\n", qPrintable(reasonText(m_address, m_port)));
    m_reopenFailed = true;
    m_outages.set({LineState::Refused, reopenPeriod});
    return false;
}

} // namespace simulation
