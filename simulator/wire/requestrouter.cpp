#include "requestrouter.h"

#include "damage.h"

namespace simulation {

namespace {

/// Behind the address: function, and in all requests that units answer the first register (2).
faults::RequestKey keyOf(Framing framing, const Bytes& request)
{
    const std::size_t offset = addressOffset(framing);
    faults::RequestKey key{request[offset], request[offset + 1]};
    if (request.size() >= offset + 4)
        key.firstRegister = request[offset + 2] << 8 | request[offset + 3];
    return key;
}

Reply plainReply(const Bytes& bytes)
{
    return bytes.empty() ? Reply() : Reply{{{bytes}}};
}

} // namespace

RequestRouter::RequestRouter(Framing framing, const Units& units, faults::Injector& faults)
    : m_framing(framing)
    , m_faults(faults)
{
    for (const auto& unit : units)
        m_endpoints.push_back(std::make_unique<Endpoint>(framing, *unit));
}

Reply RequestRouter::answer(const Bytes& request)
{
    for (const auto& unit : m_endpoints) {
        if (unit->isMeantAlone(request))
            return answer(*unit, request);
        // Nobody answers a broadcast, so no fault can meet it.
        unit->answer(request);
    }
    return {};
}

Reply RequestRouter::answer(Endpoint& unit, const Bytes& request)
{
    const std::optional<faults::Fault> fault = m_faults.next(keyOf(m_framing, request));
    if (!fault)
        return plainReply(unit.answer(request));
    const Bytes sound = faults::reachesUnit(fault->plan.kind) ? unit.answer(request) : Bytes();
    return faults::damaged(*fault, m_framing, request, sound);
}

} // namespace simulation
