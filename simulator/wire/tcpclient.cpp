#include "tcpclient.h"

#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <utility>

namespace simulation {

namespace {

// A request: transaction (2), protocol (2, always 0), length of what follows (2), unit (1), function (1), ...
constexpr std::size_t lengthEnd = 6;
constexpr std::size_t shortestRest = 2;  ///< unit and function
constexpr std::size_t longestRest = 254; ///< unit and a PDU of 253 bytes

/// A client that goes on asking while its replies are late is kept waiting at some point.
constexpr std::size_t maxPending = 4096;

std::size_t wordAt(const Bytes& bytes, std::size_t offset)
{
    return static_cast<std::size_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

bool isTemporary(int systemError)
{
    return systemError == EAGAIN || systemError == EINTR;
}

} // namespace

TcpClient::TcpClient(FileDescriptor socket)
    : m_socket(std::move(socket))
{
    // Each piece is a segment of its own.
    const int on = 1;
    ::setsockopt(m_socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

pollfd TcpClient::source() const
{
    // A client that does not take its replies is not read from either.
    short events = POLLOUT;
    if (m_unsent.empty())
        events = m_pending.size() < maxPending ? POLLIN : 0;
    return {m_socket.get(), events, 0};
}

std::optional<TcpClient::Time> TcpClient::nextSend() const
{
    if (m_pending.empty())
        return std::nullopt;
    return m_pending.begin()->first;
}

bool TcpClient::serve(const RequestHandler& handler)
{
    return m_unsent.empty() ? receive(handler) : flush();
}

/// Takes what has come and answers the requests in it.
bool TcpClient::receive(const RequestHandler& handler)
{
    std::array<std::uint8_t, 4096> buffer{};
    const ssize_t count = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
    if (count <= 0)
        return count < 0 && isTemporary(errno);
    m_received.insert(m_received.end(), buffer.begin(), buffer.begin() + count);
    return answerAll(handler);
}

/// Answers every request that is there as a whole. False when a length makes no sense: where the next request
/// begins cannot be known then, so the connection ends.
bool TcpClient::answerAll(const RequestHandler& handler)
{
    while (m_received.size() >= lengthEnd) {
        const std::size_t rest = wordAt(m_received, 4);
        if (rest < shortestRest || rest > longestRest)
            return false;
        if (m_received.size() < lengthEnd + rest)
            break;
        const auto end = m_received.begin() + static_cast<std::ptrdiff_t>(lengthEnd + rest);
        const Bytes request(m_received.begin(), end);
        m_received.erase(m_received.begin(), end);
        // Another protocol's message is passed over: its length is right, its content is not ours.
        if (wordAt(request, 2) == 0 && !schedule(handler(request)))
            return false;
    }
    return true;
}

bool TcpClient::schedule(const Reply& reply)
{
    if (reply.endsConnection) {
        resetOnClose();
        return false;
    }
    Time moment = std::chrono::steady_clock::now();
    for (const Piece& piece : reply.pieces) {
        moment += piece.pause;
        m_pending.emplace(moment, piece.bytes);
    }
    return true;
}

bool TcpClient::sendDue(Time now)
{
    while (!m_pending.empty() && m_pending.begin()->first <= now) {
        const Bytes& bytes = m_pending.begin()->second;
        m_unsent.insert(m_unsent.end(), bytes.begin(), bytes.end());
        m_pending.erase(m_pending.begin());
        if (!flush())
            return false;
    }
    return true;
}

/// Sends what the client takes now.
bool TcpClient::flush()
{
    const ssize_t count = ::send(m_socket.get(), m_unsent.data(), m_unsent.size(), MSG_NOSIGNAL);
    if (count < 0)
        return isTemporary(errno);
    m_unsent.erase(m_unsent.begin(), m_unsent.begin() + count);
    return true;
}

void TcpClient::loseAll()
{
    std::array<std::uint8_t, 4096> buffer{};
    while (::recv(m_socket.get(), buffer.data(), buffer.size(), 0) > 0) {
    }
    m_received.clear();
    m_unsent.clear();
    m_pending.clear();
}

void TcpClient::resetOnClose()
{
    const linger noFarewell{1, 0};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_LINGER, &noFarewell, sizeof noFarewell);
}

} // namespace simulation
