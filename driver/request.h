#pragma once

#include "unitmap.h"

#include <array>
#include <cstdint>

namespace driver {

/// Longest frame on a serial line: 1 address + 253 function and data + 2 CRC.
constexpr int maxFrameLength = 256;

/// A request as it goes over the line, and the length of the reply that carries it out.
struct Request
{
    std::array<unsigned char, maxFrameLength> frame{};
    int length = 0;
    int replyLength = 0;
};

/// Registers to be written: one with function 6, several with function 16.
struct RegisterWrite
{
    unitmap::Function function;
    int firstRegister;
    int count;                            ///< 1 to 16
    std::array<std::uint16_t, 16> values; ///< the first `count` are written
};

/// The request that reads a block from the unit at this address (1-255).
Request readRequest(int address, const unitmap::Block& block);

/// The request that writes registers of the unit at this address (1-255).
Request writeRequest(int address, const RegisterWrite& write);

} // namespace driver
