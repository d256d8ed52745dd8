#include "unitmodel.h"

#include "civiltime.h"

#include <algorithm>
#include <limits>

namespace simulation {

namespace {

constexpr int selfTestMs = 20000;
constexpr std::int64_t minuteMs = 60000;
constexpr std::int64_t dayMs = minuteMs * 60 * 24;
constexpr int maxDischargeMinutes = 24 * 60;
constexpr std::int64_t untilLow = std::numeric_limits<std::int64_t>::max();

} // namespace

UnitModel::UnitModel(const UnitIdentity& identity, std::uint32_t seed, std::int64_t startMs)
    : m_identity(identity)
    , m_random(seed)
{
    m_state.clockMs = startMs;
    m_state.lastDischargeMs = startMs - 41 * dayMs;
    reportIdentity(m_identity, m_image);
    step(100);
}

void UnitModel::setLastDischarge(std::int64_t civilMs)
{
    m_state.lastDischargeMs = civilMs;
    reportState(m_state, m_image);
}

/// First what runs and who feeds the load, then what flows: powers always belong to the modes of their step.
void UnitModel::step(int ms)
{
    const double seconds = ms / 1000.0;
    m_elapsedMs += ms;
    m_state.clockMs += ms;
    m_state.daysRunning = static_cast<int>(m_elapsedMs / dayMs);
    stepFeeds();
    stepEmergency();
    stepTest(ms);
    stepRectifier(ms);
    stepInverter(ms);
    stepOverload(ms);
    stepPath();
    stepVoltages(seconds);
    stepLoad(seconds);
    stepBattery(seconds);
    stepInput();
    stepTemperatures(seconds);
    reportState(m_state, m_image);
}

CommandResult UnitModel::command(int code, std::uint16_t argument)
{
    using unitmap::Command;
    if (!unitmap::rowOfCommand(code))
        return CommandResult::UnknownCode;
    switch (static_cast<Command>(code)) {
    case Command::BatteryTest:
        return argument == unitmap::noArgument ? startTest(BatteryTest::SelfTest, selfTestMs)
                                               : startDischarge(argument);
    case Command::DischargeToLow:
        return startTest(BatteryTest::Maintenance, untilLow);
    case Command::CancelTest:
        m_state.test = BatteryTest::None;
        break;
    case Command::ShutDown:
        aimFor(Target::Nothing);
        break;
    case Command::StartUp:
        if (m_state.emergencyOff)
            return CommandResult::NotNow;
        aimFor(Target::Inverter);
        break;
    case Command::ShutDownToBypass:
        return transfer(Target::Bypass);
    case Command::ToBypass:
        return transfer(Target::BypassWithReserve);
    case Command::ToInverter:
        return transfer(Target::Inverter);
    case Command::ClearFaults:
        clearFaults();
        break;
    case Command::BuzzerOn:
    case Command::BuzzerOff:
        m_state.buzzerOn = static_cast<Command>(code) == Command::BuzzerOn;
        break;
    case Command::ClearHistory:
    case Command::DownloadHistory:
        break; // the history is kept by who looks at the alarms
    }
    return CommandResult::Done;
}

void UnitModel::aimFor(Target wanted)
{
    m_target = wanted;
    m_state.outputWanted = wanted != Target::Nothing;
}

/// A transfer moves a load that is there; only starting up brings the output back.
CommandResult UnitModel::transfer(Target wanted)
{
    if (m_target == Target::Nothing)
        return CommandResult::NotNow;
    aimFor(wanted);
    return CommandResult::Done;
}

CommandResult UnitModel::startDischarge(std::uint16_t argument)
{
    if (argument == 0 || argument > maxDischargeMinutes)
        return CommandResult::BadArgument;
    return startTest(BatteryTest::Maintenance, argument * minuteMs);
}

/// Without the load on the inverter the battery has nothing to feed, and a battery that cannot take over
/// would cost the load its supply.
CommandResult UnitModel::startTest(BatteryTest test, std::int64_t durationMs)
{
    if (m_state.path != OutputPath::Inverter || !m_site.batteryConnected || m_state.batteryEmpty)
        return CommandResult::NotNow;
    m_state.test = test;
    m_testLeftMs = durationMs;
    return CommandResult::Done;
}

void UnitModel::clearFaults()
{
    m_state.endOfDischargeLatched = false;
    m_state.selfTestFailed = false;
    m_state.emergencyOff = false; // comes back at once while the button is pressed
}

void UnitModel::writeSettings(int firstRegister, const std::vector<std::uint16_t>& values)
{
    constexpr int clockRegister = 3103 - 3000;
    std::copy(values.begin(), values.end(), m_image.settings.begin() + firstRegister);
    const int lastRegister = firstRegister + static_cast<int>(values.size()) - 1;
    if (firstRegister <= clockRegister && clockRegister <= lastRegister)
        m_state.clockMs = *civilMsOf(&m_image.settings[clockRegister]);
    reportState(m_state, m_image);
}

} // namespace simulation
