#pragma once

#include "endpoint.h"
#include "reply.h"

#include <memory>
#include <vector>

namespace simulation {

namespace faults {
class Injector;
}

/// All units at the end of one transport: each gets every request, the one that is meant answers, as well as
/// the faults let it. One thread.
class RequestRouter
{
public:
    using Units = std::vector<std::unique_ptr<SimulatedUnit>>;

    /// Units and faults must outlive the router. Throws as Endpoint does.
    RequestRouter(Framing framing, const Units& units, faults::Injector& faults);

    Reply answer(const Bytes& request);

private:
    Reply answer(Endpoint& unit, const Bytes& request);

    const Framing m_framing;
    std::vector<std::unique_ptr<Endpoint>> m_endpoints;
    faults::Injector& m_faults;
};

} // namespace simulation
