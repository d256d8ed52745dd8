#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace simulation {

/// A moment as six registers carry it: year within the century, month, day, hour, minute, second.
using DateRegisters = std::array<std::uint16_t, 6>;

/// The registers of a moment, in milliseconds since the epoch of the unit's own civil time, which knows no
/// time zones.
DateRegisters dateRegistersOf(std::int64_t civilMs);

/// The moment that six date registers name, or nothing when there is no such date.
std::optional<std::int64_t> civilMsOf(const std::uint16_t* dateRegisters);

} // namespace simulation
