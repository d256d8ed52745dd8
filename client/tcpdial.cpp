#include "tcpdial.h"

#include <QElapsedTimer>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tcpdial {

namespace {

constexpr int sliceMs = 50; // how soon a request to stop is seen

socklen_t fillAddress(const QHostAddress& address, quint16 port, sockaddr_storage& storage)
{
    storage = {};
    if (address.protocol() == QAbstractSocket::IPv4Protocol) {
        auto* v4 = reinterpret_cast<sockaddr_in*>(&storage);
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
        v4->sin_addr.s_addr = htonl(address.toIPv4Address());
        return sizeof *v4;
    }
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&storage);
    v6->sin6_family = AF_INET6;
    v6->sin6_port = htons(port);
    const Q_IPV6ADDR bytes = address.toIPv6Address();
    std::memcpy(&v6->sin6_addr, &bytes, sizeof bytes);
    v6->sin6_scope_id = address.scopeId().toUInt();
    return sizeof *v6;
}

bool isConnected(int descriptor)
{
    int error = 0;
    socklen_t length = sizeof error;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length) == 0 && error == 0;
}

bool waitForConnection(int descriptor, const QElapsedTimer& timer, int timeoutMs,
                       const StopRequested& stopRequested)
{
    while (!timer.hasExpired(timeoutMs) && !stopRequested()) {
        pollfd watched{descriptor, POLLOUT, 0};
        if (::poll(&watched, 1, sliceMs) > 0)
            return isConnected(descriptor);
    }
    return false;
}

} // namespace

bool pause(int timeMs, const StopRequested& stopRequested)
{
    QElapsedTimer timer;
    timer.start();
    while (!timer.hasExpired(timeMs)) {
        if (stopRequested())
            return false;
        QThread::msleep(sliceMs);
    }
    return true;
}

int connectToAny(const QList<QHostAddress>& addresses, quint16 port, int timeoutMs,
                 const StopRequested& stopRequested)
{
    QElapsedTimer timer;
    timer.start();
    for (const QHostAddress& address : addresses) {
        sockaddr_storage storage;
        const socklen_t length = fillAddress(address, port, storage);
        const int descriptor = ::socket(storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (descriptor < 0)
            continue;
        const int begun = ::connect(descriptor, reinterpret_cast<sockaddr*>(&storage), length);
        if (begun == 0 ||
            (errno == EINPROGRESS && waitForConnection(descriptor, timer, timeoutMs, stopRequested)))
            return descriptor;
        ::close(descriptor);
    }
    return -1;
}

} // namespace tcpdial
