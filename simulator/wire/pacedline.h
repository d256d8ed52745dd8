#pragma once

#include "bytes.h"

#include <chrono>
#include <deque>
#include <optional>

namespace simulation {

/// The timing of a serial line, apart from its I/O: how long bytes travel in both directions, where a frame
/// ends (3.5 characters of silence), and when which byte of a reply has arrived. Every moment follows from
/// the moment at which the request began, so that late wake-ups never add up. Pure: the time is an argument.
class PacedLine
{
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::nanoseconds;

    /// `baud` 0 is a line without pace.
    explicit PacedLine(int baud);

    /// Takes bytes that the master has written at once.
    void receive(Time now, const std::uint8_t* data, std::size_t count);
    /// The received frame once the line has been silent long enough behind it; empty before. A frame longer
    /// than any request comes cut.
    Bytes takeFrame(Time now);
    /// Sends a reply: it begins when the frame taken last has ended and the silence behind it is over, a
    /// silence after the reply before it, and not before `earliest`. A `gap` takes the place of the silence
    /// between replies.
    void send(Bytes reply, Time earliest = {}, std::optional<Duration> gap = {});
    /// Forgets what is on its way in either direction.
    void clear();
    /// The bytes of replies that have arrived at the master by now.
    Bytes takeArrived(Time now);
    /// When takeFrame() or takeArrived() will have something; nothing while the line is idle.
    std::optional<Time> nextEvent() const;

private:
    struct Transmission
    {
        Time start;
        Bytes bytes;
        std::size_t delivered = 0;
    };

    std::size_t nextDelivery(const Transmission& sending) const;
    Time arrival(const Transmission& sending, std::size_t count) const;

    const Duration m_character;
    const Duration m_silence;
    const std::size_t m_deliverySize; ///< bytes handed over together
    Bytes m_received;
    Time m_receivedEnd{};
    Time m_frameEnd{};
    Time m_sentEnd{};
    std::deque<Transmission> m_sending;
};

} // namespace simulation
