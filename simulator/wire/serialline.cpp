#include "serialline.h"

#include "deadline.h"

#include <array>
#include <cstdio>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>

namespace simulation {

namespace {

constexpr std::chrono::seconds plugInPeriod{1};
/// A device that drops out is away long enough for everybody to see it.
constexpr std::chrono::milliseconds dropOut{100};

// The order of the sources that the line waits for.
constexpr std::size_t stopIndex = 0;
constexpr std::size_t noticeIndex = 1;
constexpr std::size_t lineIndex = 2;
constexpr std::size_t clientNoticeIndex = 3;
constexpr std::size_t sourceCount = 4;

} // namespace

SerialLine::SerialLine(std::unique_ptr<PseudoTerminal> terminal, int baud, RequestHandler handler)
    : m_link(terminal->link())
    , m_handler(std::move(handler))
    , m_terminal(std::move(terminal))
    , m_line(baud)
{}

void SerialLine::run(int stopFd)
{
    // The system may put off wake-ups by 50 us to save power, which is a twentieth of a character.
    ::prctl(PR_SET_TIMERSLACK, 1UL);
    for (;;) {
        follow(m_outages.state(std::chrono::steady_clock::now()));
        std::vector<pollfd> ready = sources(stopFd);
        const bool isReady = pollUntil(ready, nextEvent()) > 0;
        if (isReady && ready[stopIndex].revents != 0)
            return;
        // Before the request of the client that has just come, so that only what is older is dropped.
        if (isReady && ready[clientNoticeIndex].revents != 0)
            m_terminal->handleClientNotice();
        if (isReady && ready[lineIndex].revents != 0)
            receive();
        if (m_terminal)
            serve();
    }
}

std::optional<SerialLine::Time> SerialLine::nextEvent() const
{
    OptionalTime next = earlier(m_outages.end(), m_line.nextEvent());
    if (!m_late.empty())
        next = earlier(next, m_late.begin()->first);
    return next;
}

std::vector<pollfd> SerialLine::sources(int stopFd) const
{
    std::vector<pollfd> sources(sourceCount);
    sources[stopIndex] = {stopFd, POLLIN, 0};
    sources[noticeIndex] = {m_outages.notice(), POLLIN, 0};
    sources[lineIndex] = {m_terminal ? m_terminal->line() : -1, POLLIN, 0};
    sources[clientNoticeIndex] = {m_terminal ? m_terminal->clientNotice() : -1, POLLIN, 0};
    return sources;
}

/// Does what the change from the present state to this one takes.
void SerialLine::follow(LineState state)
{
    if (state == m_state || (m_state == LineState::Refused && !plugIn()))
        return;
    m_line.clear();
    m_late.clear();
    if (state == LineState::Refused)
        m_terminal.reset();
    m_state = state;
}

/// False when the device cannot be made again: it is tried once more in a while.
bool SerialLine::plugIn()
{
    QString error;
    m_terminal = PseudoTerminal::open(m_link, &error);
    if (!m_terminal && !m_plugInFailed)
        std::fprintf(stderr, "ups-sim: %s (trying again)\n", qPrintable(error));
    m_plugInFailed = !m_terminal;
    if (m_plugInFailed)
        m_outages.set({LineState::Refused, plugInPeriod});
    return m_terminal != nullptr;
}

void SerialLine::receive()
{
    std::array<std::uint8_t, 512> buffer{};
    const ssize_t count = ::read(m_terminal->line(), buffer.data(), buffer.size());
    if (count > 0 && m_state == LineState::Up)
        m_line.receive(std::chrono::steady_clock::now(), buffer.data(), static_cast<std::size_t>(count));
    m_terminal->keepRaw();
}

void SerialLine::serve()
{
    const auto now = std::chrono::steady_clock::now();
    const Bytes request = m_line.takeFrame(now);
    if (!request.empty())
        take(m_handler(request));
    while (!m_late.empty() && m_late.begin()->first <= now) {
        send(m_late.begin()->second, m_late.begin()->first);
        m_late.erase(m_late.begin());
    }
    const Bytes arrived = m_line.takeArrived(now);
    // What a full buffer does not take is lost, as on a line that nobody reads from.
    if (!arrived.empty() && ::write(m_terminal->line(), arrived.data(), arrived.size()) < 0)
        return;
}

void SerialLine::take(Reply reply)
{
    if (reply.endsConnection)
        m_outages.set({LineState::Refused, dropOut});
    if (reply.pieces.empty())
        return;
    const auto delay = reply.pieces.front().pause;
    if (delay.count() == 0)
        send(reply.pieces, {});
    else
        m_late.emplace(std::chrono::steady_clock::now() + delay, std::move(reply.pieces));
}

void SerialLine::send(const std::vector<Piece>& pieces, Time earliest)
{
    bool isFirst = true;
    for (const Piece& piece : pieces) {
        const bool hasGap = !isFirst && piece.pause.count() > 0;
        m_line.send(piece.bytes, earliest,
                    hasGap ? std::optional(PacedLine::Duration(piece.pause)) : std::nullopt);
        isFirst = false;
    }
}

} // namespace simulation
