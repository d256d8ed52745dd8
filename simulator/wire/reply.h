#pragma once

#include "bytes.h"

#include <chrono>
#include <functional>
#include <vector>

namespace simulation {

/// Bytes of a reply that go out together.
struct Piece
{
    Bytes bytes;
    /// After the piece before it, or for the first one beyond the time that a reply takes anyway. 0 behind
    /// another piece: as soon as a frame of its own may begin.
    std::chrono::milliseconds pause{0};
};

/// What a transport does about one request.
struct Reply
{
    std::vector<Piece> pieces;   ///< none where nobody answers
    bool endsConnection = false; ///< resets the connection; a serial device drops out for a moment
};

/// Gives the reply to one request as it came over the wire.
using RequestHandler = std::function<Reply(const Bytes& request)>;

} // namespace simulation
