#pragma once

#include "bytes.h"
#include "pacedline.h"
#include "pseudoterminal.h"

#include <memory>

namespace simulation {

/// Carries bytes between a pseudo-terminal and the units on it, at the pace of a real line: a request reaches
/// the units when its silence is over, their reply reaches the client byte for byte in time. Knows nothing of
/// what the bytes mean.
class SerialLine
{
public:
    SerialLine(std::unique_ptr<PseudoTerminal> terminal, int baud, RequestHandler handler);

    /// Serves the line until `stopFd` is readable.
    void run(int stopFd);

private:
    void receive();
    void serve();

    const std::unique_ptr<PseudoTerminal> m_terminal;
    const RequestHandler m_handler;
    PacedLine m_line;
};

} // namespace simulation
