#pragma once

#include "filedescriptor.h"
#include "reply.h"

#include <chrono>
#include <map>
#include <optional>
#include <poll.h>

namespace simulation {

/// One connection of the server: takes requests from the stream and sends each piece of a reply at its time,
/// whatever is still to come for earlier requests. It looks at no more of a request than is needed to find
/// its end.
class TcpClient
{
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit TcpClient(FileDescriptor socket);

    /// What to wait for.
    pollfd source() const;
    /// When a piece is to be sent, if any waits for its time.
    std::optional<Time> nextSend() const;

    // These return false when the connection is over: the client is gone, or beyond help.
    /// To be called when source() is ready.
    bool serve(const RequestHandler& handler);
    /// Sends what is due by now.
    bool sendDue(Time now);

    /// Loses what has come in unread, what was taken of a request, and all that was to be sent.
    void loseAll();

private:
    bool receive(const RequestHandler& handler);
    bool answerAll(const RequestHandler& handler);
    bool schedule(const Reply& reply);
    bool flush();
    void resetOnClose();

    FileDescriptor m_socket;
    Bytes m_received;
    Bytes m_unsent; ///< due, and not taken by the client yet
    std::multimap<Time, Bytes> m_pending;
};

} // namespace simulation
