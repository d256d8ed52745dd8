#include "simulatedunit.h"

#include "civiltime.h"
#include "trace.h"

#include <algorithm>
#include <new>
#include <utility>

namespace simulation {

namespace {

/// A write request's content, behind the function code:
///   06: register (2), value (2)
///   16: register (2), count (2), byte count (1), values (2 each)
struct WriteRequest
{
    int firstRegister = 0;
    std::vector<std::uint16_t> values; ///< empty when count and byte count do not agree
};

int wordAt(const Bytes& bytes, int offset)
{
    return bytes[static_cast<std::size_t>(offset)] << 8 | bytes[static_cast<std::size_t>(offset) + 1];
}

bool isWrite(int function)
{
    return function == unitmap::WriteSingleRegister || function == unitmap::WriteMultipleRegisters;
}

WriteRequest parseWrite(const Bytes& request, int header)
{
    WriteRequest write;
    write.firstRegister = wordAt(request, header + 1);
    int count = 1;
    int offset = header + 3;
    if (request[static_cast<std::size_t>(header)] == unitmap::WriteMultipleRegisters) {
        count = wordAt(request, header + 3);
        const int byteCount = request[static_cast<std::size_t>(header) + 5];
        if (byteCount != 2 * count)
            return write;
        offset = header + 6;
    }
    for (int i = 0; i < count; ++i)
        write.values.push_back(static_cast<std::uint16_t>(wordAt(request, offset + 2 * i)));
    return write;
}

modbus_mapping_t* checked(modbus_mapping_t* mapping)
{
    if (!mapping)
        throw std::bad_alloc();
    return mapping;
}

std::uint32_t seedOf(const UnitCourse& course, const UnitIdentity& identity)
{
    return course.seed + static_cast<std::uint32_t>(identity.address);
}

} // namespace

SimulatedUnit::SimulatedUnit(const UnitIdentity& identity, std::int64_t startMs, Trace* trace,
                             UnitCourse course)
    : m_identity(identity)
    , m_model(identity, seedOf(course, identity), startMs)
    , m_randomAlarms(seedOf(course, identity))
    , m_player(std::move(course.scenario), course.scenarioDelayMs)
    , m_fault(std::move(course.fault))
    , m_history(std::move(course.past))
    , m_trace(trace)
    , m_mapping(checked(modbus_mapping_new_start_address(0, 0, 0, unitmap::alarmPointCount, 0,
                                                         unitmap::holdingRegisterCount, 0,
                                                         unitmap::inputRegisterCount)))
    , m_commandMapping(checked(modbus_mapping_new_start_address(0, 0, 0, 0, unitmap::firstCommandRegister,
                                                                unitmap::commandRegisterCount, 0, 0)))
    , m_historyMapping(checked(modbus_mapping_new_start_address(
          0, 0, 0, 0, 0, 0, unitmap::historyHeaderRegister, unitmap::historyRegisterCount)))
{
    m_history.writeTo(m_historyMapping->tab_input_registers);
    recallLastDischarge();
    if (m_trace) {
        m_trace->points(address(), m_model.image(), nullptr);
        m_trace->buzzer(address(), m_buzzerPublished);
    }
    m_published = m_model.image();
    publish();
}

void SimulatedUnit::advance(int ms)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_elapsedMs += ms;
    playScenario(ms);
    m_model.step(ms);
    publish();
}

RegisterImage SimulatedUnit::image() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_published;
}

EventHistory SimulatedUnit::history() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_history;
}

void SimulatedUnit::reply(modbus_t* context, const Bytes& request, int header)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const int function = request[static_cast<std::size_t>(header)];
    modbus_mapping_t* mapping = m_mapping.get();
    if (isWrite(function)) {
        const WriteRequest wanted = parseWrite(request, header);
        const int code = wanted.firstRegister - unitmap::firstCommandRegister;
        const bool isCommand =
            function == unitmap::WriteSingleRegister && code >= 0 && code < unitmap::commandRegisterCount;
        Refusal refusal = Refusal::IllegalValue;
        if (!wanted.values.empty())
            refusal =
                isCommand ? runCommand(code, wanted.values[0]) : write(wanted.firstRegister, wanted.values);
        if (refusal != Refusal::None) {
            if (m_trace)
                m_trace->rejected(address(), function, wanted.firstRegister, refusal);
            modbus_reply_exception(context, request.data(), static_cast<unsigned>(refusal));
            return;
        }
        if (isCommand)
            mapping = m_commandMapping.get();
    } else if (function == unitmap::ReadInputRegisters &&
               wordAt(request, header + 1) >= unitmap::historyHeaderRegister) {
        mapping = m_historyMapping.get();
    }
    modbus_reply(context, request.data(), static_cast<int>(request.size()), mapping);
}

Refusal SimulatedUnit::write(int firstRegister, const std::vector<std::uint16_t>& values)
{
    const Refusal refusal = checkSettings(firstRegister, values);
    if (refusal != Refusal::None)
        return refusal;
    m_model.writeSettings(firstRegister, values);
    if (m_trace)
        m_trace->settings(address(), firstRegister, values);
    publish();
    return Refusal::None;
}

Refusal SimulatedUnit::runCommand(int code, std::uint16_t argument)
{
    switch (execute(code, argument)) {
    case CommandResult::UnknownCode:
    case CommandResult::BadArgument:
        return Refusal::IllegalValue;
    case CommandResult::NotNow:
        return Refusal::Busy;
    case CommandResult::Done:
        break;
    }
    if (m_trace)
        m_trace->command(address(), code, argument);
    publish();
    return Refusal::None;
}

CommandResult SimulatedUnit::execute(int code, std::uint16_t argument)
{
    const CommandResult result = m_model.command(code, argument);
    if (result == CommandResult::Done && code == static_cast<int>(unitmap::Command::ClearHistory)) {
        m_history.clear();
        m_history.writeTo(m_historyMapping->tab_input_registers);
    }
    return result;
}

/// The register of the last discharge and the history must not contradict each other.
void SimulatedUnit::recallLastDischarge()
{
    constexpr int batteryPowered = 21;
    for (const HistoryRecord& record : m_history.records())
        if (record[unitmap::HistoryCode] == batteryPowered && record[unitmap::HistoryState] == 1)
            m_model.setLastDischarge(*civilMsOf(&record[unitmap::HistoryYear]));
}

/// Every alarm that differs from the published one is an event, in the order of their indices.
void SimulatedUnit::keepEvents(const RegisterImage& now)
{
    if (now.alarms == m_published.alarms)
        return;
    for (std::size_t i = 0; i < now.alarms.size(); ++i)
        if (now.alarms[i] != m_published.alarms[i])
            m_history.add(static_cast<int>(i), now.alarms[i] == 1, m_model.state().clockMs);
    m_history.writeTo(m_historyMapping->tab_input_registers);
}

/// Makes the model's registers those that replies are made from. The trace is written under the unit's lock,
/// so that no reply can carry a value that the trace does not hold yet.
void SimulatedUnit::publish()
{
    RegisterImage now = m_model.image();
    m_forced.applyTo(now);
    keepEvents(now);
    const bool buzzerOn = m_model.state().buzzerOn;
    if (m_trace) {
        m_trace->points(address(), now, &m_published);
        if (buzzerOn != m_buzzerPublished)
            m_trace->buzzer(address(), buzzerOn);
    }
    std::copy(now.alarms.begin(), now.alarms.end(), m_mapping->tab_input_bits);
    std::copy(now.inputs.begin(), now.inputs.end(), m_mapping->tab_input_registers);
    std::copy(now.settings.begin(), now.settings.end(), m_mapping->tab_registers);
    m_published = now;
    m_buzzerPublished = buzzerOn;
}

} // namespace simulation
