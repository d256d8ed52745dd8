#pragma once

#include "bytes.h"
#include "eventhistory.h"
#include "forcedpoints.h"
#include "randomalarms.h"
#include "scenarioplayer.h"
#include "settings.h"
#include "unitmodel.h"

#include <modbus.h>

#include <memory>
#include <mutex>

namespace simulation {

class Trace;

/// What makes one course of a unit differ from another.
struct UnitCourse
{
    std::uint32_t seed = 0; ///< of all chance; units with different addresses differ all the same
    Scenario scenario;
    std::int64_t scenarioDelayMs = 0;
    FaultHook fault;     ///< brings the scenario's faults about; without one they do nothing
    EventHistory past{}; ///< what the unit's history holds at the start
};

/// One unit as the line sees it: the model, what a scenario makes of it, its history, the registers that
/// libmodbus answers from, and the trace. Any
/// thread may call; one lock keeps model steps and replies apart, so that a reply is one snapshot.
class SimulatedUnit
{
public:
    /// `trace` may be null and must outlive the unit. `startMs` as for UnitModel.
    SimulatedUnit(const UnitIdentity& identity, std::int64_t startMs, Trace* trace, UnitCourse course = {});

    int address() const { return m_identity.address; }

    /// Moves the unit on by so much virtual time, 10 to 1000 ms.
    void advance(int ms);

    /// Has libmodbus write the reply to a well-formed request for this unit. `header` is the number of bytes
    /// before the function code. A write is checked before any of it lands.
    void reply(modbus_t* context, const Bytes& request, int header);

    /// What a reader of the registers gets now.
    RegisterImage image() const;
    /// What a download of the history gets now.
    EventHistory history() const;

private:
    struct MappingDeleter
    {
        void operator()(modbus_mapping_t* mapping) const { modbus_mapping_free(mapping); }
    };
    using Mapping = std::unique_ptr<modbus_mapping_t, MappingDeleter>;

    Refusal write(int firstRegister, const std::vector<std::uint16_t>& values);
    Refusal runCommand(int code, std::uint16_t argument);
    CommandResult execute(int code, std::uint16_t argument);
    void playScenario(int ms);
    void perform(const Action& action);
    void publish();
    void keepEvents(const RegisterImage& now);
    void recallLastDischarge();

    const UnitIdentity m_identity;
    mutable std::mutex m_mutex;
    UnitModel m_model;
    ForcedPoints m_forced;
    RandomAlarms m_randomAlarms;
    ScenarioPlayer m_player;
    const FaultHook m_fault;
    EventHistory m_history;
    std::int64_t m_elapsedMs = 0;
    RegisterImage m_published; ///< what `m_mapping` holds
    bool m_buzzerPublished = false;
    Trace* const m_trace;
    const Mapping m_mapping;
    const Mapping m_commandMapping;
    const Mapping m_historyMapping;
};

} // namespace simulation
