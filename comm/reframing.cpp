#include "reframing.h"

#include "modbushelpers.h"

#include <cstring>

namespace {
constexpr int HeaderBytes = 6; // the MBAP header without the unit id, which both framings carry
constexpr int CrcBytes = 2;
} // namespace

int reframing::rtuToTcp(const unsigned char* rtu, int rtuBytes, unsigned char* tcp)
{
    const int bodyBytes = rtuBytes - CrcBytes;
    std::memset(tcp, 0, BufferBytes);
    // The length's high byte stays 0, deliberate: units on the other side expect it so.
    tcp[5] = static_cast<unsigned char>(bodyBytes);
    if (bodyBytes > 0)
        std::memcpy(tcp + HeaderBytes, rtu, static_cast<std::size_t>(bodyBytes));
    return HeaderBytes + bodyBytes;
}

int reframing::tcpToRtu(unsigned char* buffer, int tcpBytes)
{
    const int bodyBytes = tcpBytes - HeaderBytes;
    const int rtuBytes = bodyBytes + CrcBytes;
    std::memmove(buffer, buffer + HeaderBytes, static_cast<std::size_t>(bodyBytes));
    std::memset(buffer + bodyBytes, 0, CrcBytes);
    // Refused for a lone unit id, whose frame then ends in two zeros: deliberate, drivers see it as short.
    setModbusCRC(buffer, rtuBytes);
    return rtuBytes;
}
