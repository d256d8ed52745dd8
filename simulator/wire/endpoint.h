#pragma once

#include "bytes.h"
#include "filedescriptor.h"
#include "framing.h"

#include <modbus.h>

#include <memory>

namespace simulation {

class SimulatedUnit;

/// A unit's place on one transport: a libmodbus server context behind a private pair of sockets. The
/// transports only find out where a request begins and ends and hand it through here whole; parsing, checks
/// and replies are libmodbus's, and bytes on the wire can be treated badly without its knowing. One thread
/// per endpoint.
class Endpoint
{
public:
    /// `unit` must outlive the endpoint. Throws std::system_error when the system has no sockets left.
    Endpoint(Framing framing, SimulatedUnit& unit);

    /// Whether a request is for this one unit, and undamaged.
    bool isMeantAlone(const Bytes& request);

    /// The reply to one whole request; empty for another unit's request, a broadcast or a damaged frame.
    Bytes answer(const Bytes& request);

private:
    struct ContextDeleter
    {
        void operator()(modbus_t* context) const { modbus_free(context); }
    };

    bool isWhole(const Bytes& request) const;
    int addressIn(const Bytes& request) const;
    bool isIntact(const Bytes& request);
    Bytes takeSent();

    const Framing m_framing;
    SimulatedUnit& m_unit;
    FileDescriptor m_unitEnd; ///< libmodbus reads and writes here
    FileDescriptor m_lineEnd;
    std::unique_ptr<modbus_t, ContextDeleter> m_context;
};

} // namespace simulation
