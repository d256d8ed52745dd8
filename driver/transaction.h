#pragma once

#include "porthandle.h"
#include "replycheck.h"
#include "request.h"

#include <array>
#include <chrono>

namespace driver {

/// Bounds on the time of one request, on top of the port's own read time-out for the first byte.
struct TransferLimits
{
    /// From the first byte of a reply to its last. 253 bytes at 1200 baud take 2.4 s.
    std::chrono::milliseconds reply{3000};
    /// For reading away what disturbed a request.
    std::chrono::milliseconds drain{3000};
};

/// Carries requests over one port handle, one after the other. Lives on the stack of one driver call; the
/// caller holds the port's lock meanwhile. Keeps nothing between driver calls: it leaves a silent line
/// behind.
///
/// The same code runs over a serial line, where a read returns what was asked for or what had come when the
/// line fell silent, and over TCP, where a read returns one whole frame whatever was asked for.
class Transaction
{
public:
    /// The handle must have both entries and outlive the transaction.
    explicit Transaction(PortHandle& port, const TransferLimits& limits = {});

    /// Sends the request and waits for its reply, which is in reply() if the result is None. After any
    /// failure but an exception the line has been read until it was silent, so that nothing of a late or
    /// broken reply meets the next request.
    ReplyError run(const Request& request);

    /// The bytes of the last reply, valid until the next run().
    const unsigned char* reply() const { return m_buffer.data(); }

private:
    using Clock = std::chrono::steady_clock;

    bool send(const Request& request);
    int receive(const Request& request);
    void keepFrameGap() const;
    void drain();
    int read(int offset, int wanted);
    void forgetPace();
    void notePace(int count, Clock::duration timePerByte);
    bool isSilence(int count, Clock::duration took);
    int affordable(int wanted, Clock::time_point deadline) const;

    /// The most that a read can bring over TCP, where the length asked for does not bound it.
    static constexpr int maxReadLength = 1000;

    PortHandle& m_port;
    TransferLimits m_limits;
    std::array<unsigned char, maxFrameLength + maxReadLength> m_buffer{};
    Clock::duration m_timePerByte{0}; ///< the slowest of the reads of this request
    Clock::duration m_linePace{0};    ///< the slowest of the longest of them
    int m_longestRead = 0;            ///< in bytes
    bool m_lineSilent = false;        ///< the last read met a silent line
    int m_hastyReads = 0;             ///< reads in a row that brought nothing without waiting
};

} // namespace driver
