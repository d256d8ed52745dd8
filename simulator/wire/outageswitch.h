#pragma once

#include "filedescriptor.h"

#include <chrono>
#include <mutex>
#include <optional>

namespace simulation {

/// How a transport as a whole is.
enum class LineState
{
    Up,
    Refused,  ///< nothing there: no listener, no serial device
    BlackHole ///< there, and takes everything without a sign
};

struct Outage
{
    LineState state = LineState::Up;
    std::chrono::milliseconds duration{0}; ///< 0: until the switch is set again
};

/// Tells a transport, from any thread, when to be out of order and for how long.
class OutageSwitch
{
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Throws std::system_error when the system has no descriptors left.
    OutageSwitch();

    /// Replaces what was set before. Any thread.
    void set(const Outage& outage, Time now = std::chrono::steady_clock::now());

    // For the transport's own thread:
    /// Readable when set() was called since the last state().
    int notice() const { return m_notice.get(); }
    /// How the transport has to be now.
    LineState state(Time now);
    /// When that ends by itself, if ever.
    std::optional<Time> end() const;

private:
    const FileDescriptor m_notice;
    mutable std::mutex m_mutex;
    LineState m_state = LineState::Up;
    std::optional<Time> m_end;
};

} // namespace simulation
