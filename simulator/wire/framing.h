#pragma once

#include <cstddef>

namespace simulation {

/// RTU: unit, function, data, CRC (2, low byte first).
/// TCP: transaction (2), protocol (2), length of what follows (2), unit, function, data.
enum class Framing
{
    Rtu,
    Tcp
};

/// Where the unit's address stands; the function code follows it.
constexpr std::size_t addressOffset(Framing framing)
{
    return framing == Framing::Rtu ? 0 : 6;
}

} // namespace simulation
