#pragma once

#include "bytes.h"
#include "settings.h"
#include "unitmodel.h"

#include <modbus.h>

#include <memory>
#include <mutex>

namespace simulation {

class Trace;

/// One unit as the line sees it: the model, the registers that libmodbus answers from, and the trace. Any
/// thread may call; one lock keeps model steps and replies apart, so that a reply is one snapshot.
class SimulatedUnit
{
public:
    /// `trace` may be null and must outlive the unit. `startMs` as for UnitModel.
    SimulatedUnit(const UnitIdentity& identity, std::int64_t startMs, Trace* trace);

    int address() const { return m_identity.address; }

    /// Moves the unit on by so much virtual time.
    void advance(int ms);

    /// Has libmodbus write the reply to a well-formed request for this unit. `header` is the number of bytes
    /// before the function code. A write is checked before any of it lands.
    void reply(modbus_t* context, const Bytes& request, int header);

private:
    struct MappingDeleter
    {
        void operator()(modbus_mapping_t* mapping) const { modbus_mapping_free(mapping); }
    };
    using Mapping = std::unique_ptr<modbus_mapping_t, MappingDeleter>;

    Refusal write(int firstRegister, const std::vector<std::uint16_t>& values);
    Refusal runCommand(const std::vector<std::uint16_t>& values);
    void publish();

    const UnitIdentity m_identity;
    std::mutex m_mutex;
    UnitModel m_model;
    std::int64_t m_elapsedMs = 0;
    RegisterImage m_published; ///< what `m_mapping` holds
    bool m_buzzerPublished = false;
    Trace* const m_trace;
    const Mapping m_mapping;
    const Mapping m_commandMapping;
};

} // namespace simulation
