#pragma once

#include <QHostAddress>

#include <functional>

/// Making a TCP connection on a thread that may be asked to stop meanwhile.
namespace tcpdial {

/// Asked many times a second during a wait; true ends the wait.
using StopRequested = std::function<bool()>;

/// Sleeps; false when asked to stop before the time was over.
bool pause(int timeMs, const StopRequested& stopRequested);

/// Connects to the first address that takes the connection within the time, for all of them together.
/// Returns a connected descriptor, which is the caller's; -1 when none did, or when asked to stop.
int connectToAny(const QList<QHostAddress>& addresses, quint16 port, int timeoutMs,
                 const StopRequested& stopRequested);

} // namespace tcpdial
