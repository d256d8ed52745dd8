#include "serialline.h"

#include <array>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>

namespace simulation {

namespace {

/// The time until a moment as ppoll() takes it; 0 when it has passed.
timespec remaining(PacedLine::Time moment)
{
    using namespace std::chrono;
    const auto left = std::max(nanoseconds::zero(), nanoseconds(moment - steady_clock::now()));
    const auto wholeSeconds = duration_cast<seconds>(left);
    timespec time{};
    time.tv_sec = static_cast<time_t>(wholeSeconds.count());
    time.tv_nsec = static_cast<long>((left - wholeSeconds).count());
    return time;
}

} // namespace

SerialLine::SerialLine(std::unique_ptr<PseudoTerminal> terminal, int baud, RequestHandler handler)
    : m_terminal(std::move(terminal))
    , m_handler(std::move(handler))
    , m_line(baud)
{}

void SerialLine::run(int stopFd)
{
    // The system may put off wake-ups by 50 us to save power, which is a twentieth of a character.
    ::prctl(PR_SET_TIMERSLACK, 1UL);
    std::array<pollfd, 3> sources = {
        {{stopFd, POLLIN, 0}, {m_terminal->line(), POLLIN, 0}, {m_terminal->clientNotice(), POLLIN, 0}}};
    for (;;) {
        const auto next = m_line.nextEvent();
        const timespec wait = next ? remaining(*next) : timespec{};
        const int ready = ::ppoll(sources.data(), sources.size(), next ? &wait : nullptr, nullptr);
        if (ready > 0 && sources[0].revents != 0)
            return;
        // Before the request of the client that has just come, so that only what is older is dropped.
        if (ready > 0 && sources[2].revents != 0)
            m_terminal->handleClientNotice();
        if (ready > 0 && sources[1].revents != 0)
            receive();
        serve();
    }
}

void SerialLine::receive()
{
    std::array<std::uint8_t, 512> buffer{};
    const ssize_t count = ::read(m_terminal->line(), buffer.data(), buffer.size());
    if (count > 0)
        m_line.receive(std::chrono::steady_clock::now(), buffer.data(), static_cast<std::size_t>(count));
    m_terminal->keepRaw();
}

void SerialLine::serve()
{
    const auto now = std::chrono::steady_clock::now();
    const Bytes request = m_line.takeFrame(now);
    if (!request.empty()) {
        const Bytes reply = m_handler(request);
        if (!reply.empty())
            m_line.send(reply);
    }
    const Bytes arrived = m_line.takeArrived(now);
    // What a full buffer does not take is lost, as on a line that nobody reads from.
    if (!arrived.empty() && ::write(m_terminal->line(), arrived.data(), arrived.size()) < 0)
        return;
}

} // namespace simulation
