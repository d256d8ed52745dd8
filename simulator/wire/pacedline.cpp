#include "pacedline.h"

#include <algorithm>
#include <utility>

namespace simulation {

namespace {

constexpr int bitsPerCharacter = 10;
/// One more than the longest request: enough to see that it is too long.
constexpr std::size_t longestFrame = 256 + 1;
/// Bytes that arrive within this time are delivered together: fine enough for any reader, coarse enough to
/// keep the machine idle at high speeds.
constexpr std::chrono::milliseconds delivery{2};

PacedLine::Duration characterTime(int baud)
{
    return baud > 0 ? std::chrono::nanoseconds(std::chrono::seconds(bitsPerCharacter)) / baud
                    : PacedLine::Duration::zero();
}

/// 3.5 characters, but never less than 1.75 ms above 19200 baud; without pace, enough for a request that was
/// written in two pieces.
PacedLine::Duration silenceTime(int baud)
{
    if (baud == 0)
        return std::chrono::milliseconds(1);
    return baud > 19200 ? PacedLine::Duration(std::chrono::microseconds(1750)) : characterTime(baud) * 7 / 2;
}

} // namespace

PacedLine::PacedLine(int baud)
    : m_character(characterTime(baud))
    , m_silence(silenceTime(baud))
    , m_deliverySize(baud > 0 ? static_cast<std::size_t>(std::max<Duration::rep>(1, delivery / m_character))
                              : 256)
{}

void PacedLine::receive(Time now, const std::uint8_t* data, std::size_t count)
{
    m_receivedEnd = std::max(now, m_receivedEnd) + m_character * count;
    const std::size_t room = longestFrame - std::min(longestFrame, m_received.size());
    m_received.insert(m_received.end(), data, data + std::min(room, count));
}

Bytes PacedLine::takeFrame(Time now)
{
    if (m_received.empty() || now < m_receivedEnd + m_silence)
        return {};
    m_frameEnd = m_receivedEnd;
    return std::exchange(m_received, {});
}

void PacedLine::send(Bytes reply, Time earliest, std::optional<Duration> gap)
{
    Transmission sending;
    sending.start = std::max({m_frameEnd + m_silence, m_sentEnd + gap.value_or(m_silence), earliest});
    sending.bytes = std::move(reply);
    m_sentEnd = arrival(sending, sending.bytes.size());
    m_sending.push_back(std::move(sending));
}

void PacedLine::clear()
{
    m_received.clear();
    m_sending.clear();
}

Bytes PacedLine::takeArrived(Time now)
{
    Bytes arrived;
    while (!m_sending.empty()) {
        Transmission& sending = m_sending.front();
        while (sending.delivered < sending.bytes.size() && arrival(sending, nextDelivery(sending)) <= now) {
            const std::size_t end = nextDelivery(sending);
            arrived.insert(arrived.end(),
                           sending.bytes.begin() + static_cast<std::ptrdiff_t>(sending.delivered),
                           sending.bytes.begin() + static_cast<std::ptrdiff_t>(end));
            sending.delivered = end;
        }
        if (sending.delivered < sending.bytes.size())
            break;
        m_sending.pop_front();
    }
    return arrived;
}

std::optional<PacedLine::Time> PacedLine::nextEvent() const
{
    std::optional<Time> next;
    if (!m_received.empty())
        next = m_receivedEnd + m_silence;
    if (!m_sending.empty()) {
        const Time delivered = arrival(m_sending.front(), nextDelivery(m_sending.front()));
        next = next ? std::min(*next, delivered) : delivered;
    }
    return next;
}

/// How many bytes of a reply the master has after the next delivery.
std::size_t PacedLine::nextDelivery(const Transmission& sending) const
{
    return std::min(sending.bytes.size(), sending.delivered + m_deliverySize);
}

PacedLine::Time PacedLine::arrival(const Transmission& sending, std::size_t count) const
{
    return sending.start + m_character * count;
}

} // namespace simulation
