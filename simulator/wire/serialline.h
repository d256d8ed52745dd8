#pragma once

#include "outageswitch.h"
#include "pacedline.h"
#include "pseudoterminal.h"
#include "reply.h"

#include <map>
#include <memory>
#include <poll.h>

namespace simulation {

/// Carries bytes between a pseudo-terminal and the units on it, at the pace of a real line: a request reaches
/// the units when its silence is over, their reply reaches the client byte for byte in time. Knows nothing of
/// what the bytes mean.
class SerialLine
{
public:
    SerialLine(std::unique_ptr<PseudoTerminal> terminal, int baud, RequestHandler handler);

    /// Refused: the device drops out, as an adapter that is unplugged, and comes back. BlackHole: what is
    /// written is lost.
    OutageSwitch& outages() { return m_outages; }

    /// Serves the line until `stopFd` is readable.
    void run(int stopFd);

private:
    using Time = OutageSwitch::Time;

    void follow(LineState state);
    bool plugIn();
    std::optional<Time> nextEvent() const;
    std::vector<pollfd> sources(int stopFd) const;
    void receive();
    void serve();
    void take(Reply reply);
    void send(const std::vector<Piece>& pieces, Time earliest);

    const QString m_link;
    const RequestHandler m_handler;
    OutageSwitch m_outages;
    LineState m_state = LineState::Up;
    std::unique_ptr<PseudoTerminal> m_terminal; ///< null while the device is gone
    bool m_plugInFailed = false;                ///< told already
    PacedLine m_line;
    /// Late replies. They take the line only when their time has come: other units answer meanwhile.
    std::multimap<Time, std::vector<Piece>> m_late;
};

} // namespace simulation
