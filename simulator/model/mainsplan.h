#pragma once

#include <cstdint>

namespace simulation {

/// Whether the mains is there, `elapsedMs` of virtual time after the start: gone for seven seconds of every
/// thirty, first after eight. Units with different addresses lose it at different times, so that their events
/// can be told apart; all have lost it and got it back within the first 25 s.
constexpr bool isMainsPresent(std::int64_t elapsedMs, int address)
{
    const std::int64_t firstFailureMs = 8000 + 3000 * ((address - 1) % 4);
    const std::int64_t sinceFirstMs = elapsedMs - firstFailureMs;
    return sinceFirstMs < 0 || sinceFirstMs % 30000 >= 7000;
}

} // namespace simulation
