#include "damage.h"

#include <algorithm>
#include <random>

namespace simulation::faults {

namespace {

constexpr std::size_t crcLength = 2;
/// Low bytes of two lengths: the MBAP header's, and a read reply's own.
constexpr std::size_t headerLengthOffset = 5;
constexpr std::size_t byteCountOffset = 8;
constexpr int highestAddress = 247;
constexpr std::uint8_t exceptionFlag = 0x80;
constexpr std::uint8_t lastReadFunction = 4;

// Longer than the silence by which frames are told apart on a line of 9600 baud.
constexpr int defaultGapMs = 5;
constexpr int defaultNoiseBytes = 8;

int amountOr(const Plan& plan, int standard)
{
    return plan.amount > 0 ? plan.amount : standard;
}

void appendCrc(Bytes& frame)
{
    std::uint16_t crc = 0xFFFF;
    for (const std::uint8_t byte : frame) {
        crc = static_cast<std::uint16_t>(crc ^ byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<std::uint16_t>((crc & 1) != 0 ? crc >> 1 ^ 0xA001 : crc >> 1);
    }
    frame.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    frame.push_back(static_cast<std::uint8_t>(crc >> 8));
}

/// A bit error in the middle of the frame, so that whoever does not check takes a wrong value. A TCP frame
/// has no checksum to contradict: there it is the lengths that do not fit.
Bytes withWrongCrc(Framing framing, Bytes frame)
{
    if (framing == Framing::Rtu) {
        frame[frame.size() / 2] ^= 0x10;
        return frame;
    }
    ++frame[headerLengthOffset];
    if (frame[addressOffset(framing) + 1] <= lastReadFunction)
        ++frame[byteCountOffset];
    return frame;
}

/// The next unit's answer, sound in itself.
Bytes ofOtherUnit(Framing framing, Bytes frame)
{
    std::uint8_t& address = frame[addressOffset(framing)];
    address = static_cast<std::uint8_t>(address % highestAddress + 1);
    if (framing == Framing::Rtu) {
        frame.resize(frame.size() - crcLength);
        appendCrc(frame);
    }
    return frame;
}

Bytes exceptionTo(Framing framing, const Bytes& request, int code)
{
    const std::size_t function = addressOffset(framing) + 1;
    Bytes frame(request.begin(), request.begin() + static_cast<std::ptrdiff_t>(function + 1));
    frame[function] |= exceptionFlag;
    frame.push_back(static_cast<std::uint8_t>(code));
    if (framing == Framing::Rtu) {
        appendCrc(frame);
    } else {
        frame[headerLengthOffset - 1] = 0;
        frame[headerLengthOffset] = 3; // unit, function, code
    }
    return frame;
}

/// Always the same noise for the same occurrence, by turns before and behind the frame.
Bytes withNoise(const Fault& fault, const Bytes& frame)
{
    std::minstd_rand random(static_cast<std::uint32_t>(fault.occurrence) + 1);
    Bytes bytes(static_cast<std::size_t>(amountOr(fault.plan, defaultNoiseBytes)));
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random() >> 16); });
    const bool isBefore = fault.occurrence % 2 == 0;
    bytes.insert(isBefore ? bytes.end() : bytes.begin(), frame.begin(), frame.end());
    return bytes;
}

Bytes truncated(const Plan& plan, Bytes frame)
{
    const std::size_t kept = plan.amount > 0 ? static_cast<std::size_t>(plan.amount) : frame.size() / 2;
    frame.resize(std::min(kept, frame.size() - 1));
    return frame;
}

std::vector<Piece> splitUp(const Plan& plan, const Bytes& frame)
{
    const std::chrono::milliseconds gap(amountOr(plan, defaultGapMs));
    std::vector<Piece> pieces;
    for (const std::uint8_t byte : frame)
        pieces.push_back({{byte}, gap});
    pieces.front().pause = std::chrono::milliseconds(0);
    return pieces;
}

/// Two frames on a line, one segment with two replies over TCP.
std::vector<Piece> doubled(Framing framing, const Bytes& frame)
{
    if (framing == Framing::Rtu)
        return {{frame}, {frame}};
    Bytes twice = frame;
    twice.insert(twice.end(), frame.begin(), frame.end());
    return {{twice}};
}

} // namespace

bool reachesUnit(Kind kind)
{
    switch (kind) {
    case Kind::NoAnswer:
    case Kind::Exception:
    case Kind::Reset:
    case Kind::Refused:
    case Kind::BlackHole:
        return false;
    case Kind::Late:
    case Kind::WrongCrc:
    case Kind::WrongUnit:
    case Kind::Truncated:
    case Kind::Duplicated:
    case Kind::Split:
    case Kind::Noise:
    case Kind::None:
        break;
    }
    return true;
}

Reply damaged(const Fault& fault, Framing framing, const Bytes& request, const Bytes& reply)
{
    const Plan& plan = fault.plan;
    if (plan.kind == Kind::Exception)
        return {{{exceptionTo(framing, request, plan.amount)}}};
    if (plan.kind == Kind::Reset)
        return {{}, true};
    if (reply.empty())
        return {};
    switch (plan.kind) {
    case Kind::Late:
        return {{{reply, std::chrono::milliseconds(plan.amount)}}};
    case Kind::WrongCrc:
        return {{{withWrongCrc(framing, reply)}}};
    case Kind::WrongUnit:
        return {{{ofOtherUnit(framing, reply)}}};
    case Kind::Truncated:
        return {{{truncated(plan, reply)}}};
    case Kind::Duplicated:
        return {doubled(framing, reply)};
    case Kind::Split:
        return {splitUp(plan, reply)};
    case Kind::Noise:
        return {{{withNoise(fault, reply)}}};
    case Kind::NoAnswer:
    case Kind::Exception:
    case Kind::Reset:
    case Kind::Refused:
    case Kind::BlackHole:
    case Kind::None:
        break;
    }
    return {};
}

} // namespace simulation::faults
