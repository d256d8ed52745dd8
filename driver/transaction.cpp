#include "transaction.h"

#include <algorithm>
#include <thread>

namespace driver {

namespace {

/// What a TCP read returns for "nothing usable": silence, a fragment that it swallowed, a lost connection.
constexpr int shortTcpAnswer = -5;
/// A TCP read waits 1000 ms; one that returned well before that did not meet silence.
constexpr std::chrono::milliseconds tcpSilence{900};
/// On a lost connection every read returns at once, and waiting for silence would be in vain.
constexpr std::chrono::milliseconds hastyRead{1};
constexpr int maxHastyReads = 32;
/// Unit id and function: they tell how long the reply is. TCP never brings as little as this, so that a
/// whole frame is recognised by the first read.
constexpr int headLength = 2;
/// A serial read can only be left when it is complete or the line is silent, so one that asked for much of a
/// trickling line would overrun every deadline: by this many time-outs of the port at the most.
constexpr int maxAsked = 32;
/// On a serial line frames are told apart by 3.5 byte times of silence: 32 ms at 1200 baud, the slowest.
constexpr double gapInBytes = 3.5;
constexpr std::chrono::milliseconds maxGap{40};

} // namespace

Transaction::Transaction(PortHandle& port, const TransferLimits& limits)
    : m_port(port)
    , m_limits(limits)
{}

ReplyError Transaction::run(const Request& request)
{
    forgetPace();
    if (!send(request))
        return ReplyError::NotSent;
    const int length = receive(request);
    const ReplyError error = length > 0 ? checkReply(request, m_buffer.data(), length) : ReplyError::NoAnswer;
    if (length == 0)
        m_lineSilent = false; // a late reply may still come: one more time-out of silence, to be rid of it
    // An exception is a sound reply: nothing follows it.
    if (error == ReplyError::None || error == ReplyError::Exception)
        keepFrameGap();
    else
        drain();
    return error;
}

/// The line's speed is the port's affair, so the gap follows from the pace at which the reply came in.
void Transaction::keepFrameGap() const
{
    const std::chrono::duration<double> gap = m_linePace * gapInBytes;
    std::this_thread::sleep_for(std::min<std::chrono::duration<double>>(gap, maxGap));
}

bool Transaction::send(const Request& request)
{
    auto frame = request.frame; // the entry takes a buffer that it may change
    return m_port.writeEntry(&m_port, reinterpret_cast<char*>(frame.data()), request.length) ==
           request.length;
}

/// Returns the number of bytes that came. How long the unit takes to begin is bounded by the port's read
/// time-out, which the operator sets; how long it takes to finish, here.
int Transaction::receive(const Request& request)
{
    int length = 0;
    int wanted = headLength;
    Clock::time_point deadline = Clock::time_point::max();
    while (length < wanted) {
        const int asked = affordable(wanted - length, deadline);
        const int count = asked > 0 ? read(length, asked) : 0;
        if (count <= 0)
            break;
        if (length == 0) {
            deadline = Clock::now() + m_limits.reply;
            forgetPace(); // the first read waited for the unit, not for the line
        }
        length += count;
        if (count > asked)
            break; // a whole frame: there is no more of it to come
        if (length >= headLength)
            wanted = isExceptionTo(request, m_buffer.data()) ? exceptionLength : request.replyLength;
    }
    return length;
}

void Transaction::drain()
{
    const Clock::time_point deadline = Clock::now() + m_limits.drain;
    while (!m_lineSilent) {
        const int asked = affordable(maxAsked, deadline);
        if (asked == 0)
            return;
        read(0, asked);
    }
}

int Transaction::read(int offset, int wanted)
{
    const Clock::time_point begin = Clock::now();
    const int count = m_port.readEntry(&m_port, reinterpret_cast<char*>(m_buffer.data()) + offset, wanted);
    const Clock::duration took = Clock::now() - begin;
    m_lineSilent = isSilence(count, took);
    // More than was asked for is a whole frame, which has no pace.
    if (count > 0 && count <= wanted)
        notePace(count, took / count);
    return std::min(count, maxReadLength);
}

void Transaction::forgetPace()
{
    m_timePerByte = Clock::duration::zero();
    m_linePace = Clock::duration::zero();
    m_longestRead = 0;
}

/// The slowest pace counts: bytes that had come before the read tell nothing of the line. For the gap, of the
/// longest reads alone: a few bytes tell more of how late this thread woke up than of the line.
void Transaction::notePace(int count, Clock::duration timePerByte)
{
    m_timePerByte = std::max(m_timePerByte, timePerByte);
    if (count < m_longestRead)
        return;
    m_linePace = count > m_longestRead ? timePerByte : std::max(m_linePace, timePerByte);
    m_longestRead = count;
}

bool Transaction::isSilence(int count, Clock::duration took)
{
    if (count > 0 || took >= hastyRead)
        m_hastyReads = 0;
    else
        ++m_hastyReads;
    if (count > 0)
        return false;
    // Any other result without bytes comes from a serial line: time-out, or a port that is gone.
    return count != shortTcpAnswer || took >= tcpSilence || m_hastyReads >= maxHastyReads;
}

/// How many of the wanted bytes can come before the deadline at the pace so far; 0 when it has
/// passed. A line that trickles is thereby asked for little at a time: a read cannot be called back.
int Transaction::affordable(int wanted, Clock::time_point deadline) const
{
    wanted = std::min(wanted, maxAsked);
    if (deadline == Clock::time_point::max())
        return wanted;
    const Clock::duration left = deadline - Clock::now();
    if (left <= Clock::duration::zero())
        return 0;
    if (m_timePerByte * wanted <= left)
        return wanted;
    return std::max(1, static_cast<int>(left / m_timePerByte));
}

} // namespace driver
