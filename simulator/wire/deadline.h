#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <optional>
#include <poll.h>
#include <vector>

namespace simulation {

using OptionalTime = std::optional<std::chrono::steady_clock::time_point>;

/// The earlier of two moments that may be none.
inline OptionalTime earlier(const OptionalTime& a, const OptionalTime& b)
{
    return a && b ? std::min(*a, *b) : a ? a : b;
}

/// Waits until a source is ready or the moment has come, if there is one; as ppoll(), to the microsecond.
inline int pollUntil(std::vector<pollfd>& sources, const OptionalTime& moment)
{
    using namespace std::chrono;
    timespec wait{};
    if (moment) {
        const auto left = std::max(nanoseconds::zero(), nanoseconds(*moment - steady_clock::now()));
        const auto wholeSeconds = duration_cast<seconds>(left);
        wait.tv_sec = static_cast<time_t>(wholeSeconds.count());
        wait.tv_nsec = static_cast<long>((left - wholeSeconds).count());
    }
    return ::ppoll(sources.data(), sources.size(), moment ? &wait : nullptr, nullptr);
}

} // namespace simulation
