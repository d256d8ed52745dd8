#include "decode.h"

#include "modbushelpers.h"

#include <cstddef>

namespace driver {

namespace {

constexpr int replyHeadLength = 3; ///< unit id, function, byte count

} // namespace

PointValue* decodeBlock(const unitmap::Block& block, const unsigned char* reply, PointValue* values)
{
    const unsigned char* data = reply + replyHeadLength;
    for (std::ptrdiff_t i = 0; i < block.count; ++i) {
        const int point = block.firstPoint + static_cast<int>(i);
        // Inputs are packed eight to a byte, the first in the lowest bit; registers take two bytes.
        const std::uint16_t raw = block.function == unitmap::ReadDiscreteInputs
                                      ? static_cast<std::uint16_t>(data[i / 8] >> (i % 8) & 1)
                                      : UINT8_2_to_UINT16(&data[2 * i]);
        *values++ = {point, unitmap::valueOf(*unitmap::rowOfPoint(point), raw)};
    }
    return values;
}

} // namespace driver
