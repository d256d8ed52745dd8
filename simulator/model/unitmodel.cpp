#include "unitmodel.h"

#include "settings.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace simulation {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr int rectifierSoftStartMs = 2000;
constexpr int inverterSoftStartMs = 3000;
constexpr int selfTestMs = 20000;
constexpr int minuteMs = 60000;
constexpr int maxDischargeMinutes = 24 * 60;
constexpr std::int64_t untilLow = std::numeric_limits<std::int64_t>::max();

// Battery, in percent of its charge.
constexpr double lowPercent = 30;
constexpr double recoveredPercent = 35;
constexpr double emptyPercent = 10;
constexpr double taperPercent = 90; ///< the charging current falls from here on
constexpr double floatPercent = 99;

// Losses.
constexpr double mainsEfficiency = 0.94;
constexpr double batteryEfficiency = 0.93;
constexpr double idlePowerW = 200;
constexpr double inputPowerFactor = 0.99;

/// Moves `value` towards `target` as a first-order lag does in `seconds`.
void approach(double& value, double target, double seconds, double timeConstantS)
{
    value += (target - value) * (1 - std::exp(-seconds / timeConstantS));
}

double sum(const Phases& phases)
{
    return phases[0] + phases[1] + phases[2];
}

} // namespace

UnitModel::UnitModel(const UnitIdentity& identity, std::uint32_t seed, std::int64_t startMs)
    : m_identity(identity)
    , m_random(seed)
{
    m_state.clockMs = startMs;
    m_state.lastDischargeMs = startMs - std::int64_t(41) * 24 * 60 * minuteMs;
    reportIdentity(m_identity, m_image);
    step(100);
}

void UnitModel::step(int ms)
{
    const double seconds = ms / 1000.0;
    m_elapsedMs += ms;
    m_state.clockMs += ms;
    stepTest(ms);
    stepRectifier(ms);
    stepInverter(ms);
    stepPath();
    stepSupply(seconds);
    stepLoad(seconds);
    stepBattery(seconds);
    stepInput();
    stepTemperatures(seconds);
    reportState(m_state, m_image);
}

/// What the inverter can draw from. A test blocks the rectifier, so that the battery has to prove itself.
UnitModel::DcSource UnitModel::dcSource() const
{
    const bool rectifierReady = m_state.mainsPresent && m_rectifierStartMs == 0;
    const bool blocked = m_state.test != BatteryTest::None;
    if (rectifierReady && !blocked)
        return DcSource::Rectifier;
    return m_state.batteryEmpty ? DcSource::None : DcSource::Battery;
}

void UnitModel::stepTest(int ms)
{
    if (m_state.test == BatteryTest::None)
        return;
    if (m_testLeftMs != untilLow)
        m_testLeftMs -= ms;
    const bool ends = m_testLeftMs <= 0 || m_state.batteryLow || m_state.path != OutputPath::Inverter;
    if (ends)
        m_state.test = BatteryTest::None;
}

void UnitModel::stepRectifier(int ms)
{
    m_rectifierStartMs = m_state.mainsPresent ? std::max(0, m_rectifierStartMs - ms) : rectifierSoftStartMs;
    if (dcSource() == DcSource::Rectifier)
        m_state.rectifier = Rectifier::Pfc;
    else if (m_state.mainsPresent && m_rectifierStartMs > 0)
        m_state.rectifier = Rectifier::SoftStart;
    else
        m_state.rectifier = dcSource() == DcSource::Battery && m_state.inverter != Inverter::Off
                                ? Rectifier::Battery
                                : Rectifier::Off;
}

void UnitModel::stepInverter(int ms)
{
    const bool wanted = m_target == Target::Inverter || m_target == Target::BypassWithReserve ||
                        (m_target == Target::Bypass && !m_state.mainsPresent);
    if (!wanted || dcSource() == DcSource::None) {
        m_state.inverter = Inverter::Off;
        m_inverterStartMs = inverterSoftStartMs;
        return;
    }
    m_inverterStartMs = std::max(0, m_inverterStartMs - ms);
    m_state.inverter = m_inverterStartMs == 0 ? Inverter::Run : Inverter::SoftStart;
}

/// The bypass also bridges the inverter's soft start; the inverter stands in for a bypass that failed.
void UnitModel::stepPath()
{
    const bool inverterReady = m_state.inverter == Inverter::Run;
    const bool prefersInverter = m_target == Target::Inverter;
    if (m_target == Target::Nothing)
        m_state.path = OutputPath::None;
    else if (inverterReady && (prefersInverter || !m_state.mainsPresent))
        m_state.path = OutputPath::Inverter;
    else
        m_state.path = m_state.mainsPresent ? OutputPath::Bypass : OutputPath::None;
}

/// Mains, bypass and output voltages and frequencies. The site always has the mains that the unit is set for.
void UnitModel::stepSupply(double seconds)
{
    const double mainsV = m_image.value(3039);
    const double outputV = m_image.value(3041);
    const double mainsHz = m_image.value(3040) + 0.04 * m_frequencyWander.step(seconds, m_random);
    const double outputHz =
        m_state.mainsPresent && m_image.value(3040) == m_image.value(3042) ? mainsHz : m_image.value(3042);
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const double present = m_state.mainsPresent ? 1 : 0;
        m_state.input.voltageV[phase] =
            present * mainsV * (1 + 0.012 * m_mainsWander[phase].step(seconds, m_random));
        m_state.input.frequencyHz[phase] = present * mainsHz;
        m_state.bypass.voltageV[phase] = m_state.input.voltageV[phase];
        m_state.bypass.frequencyHz[phase] = m_state.input.frequencyHz[phase];
        const double inverterV = outputV * (1 + 0.003 * m_inverterWander[phase].step(seconds, m_random));
        const bool onBypass = m_state.path == OutputPath::Bypass;
        const bool supplied = m_state.path != OutputPath::None;
        m_state.output.voltageV[phase] = onBypass ? m_state.bypass.voltageV[phase] : supplied * inverterV;
        m_state.output.frequencyHz[phase] = onBypass ? mainsHz : supplied * outputHz;
    }
}

/// The load breathes around 35 to 60 % of the rating, its phases a little apart.
void UnitModel::stepLoad(double seconds)
{
    const double ratedPhaseKva = ratedKva(m_identity.address) / 3.0;
    const bool supplied = m_state.path != OutputPath::None;
    const bool onBypass = m_state.path == OutputPath::Bypass;
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const auto offset = static_cast<double>(phase);
        const double swing =
            std::sin(2 * pi * (static_cast<double>(m_elapsedMs) / 97000.0 + 0.3 * m_identity.address));
        const double wander = m_loadWander[phase].step(seconds, m_random);
        const double fraction = 0.475 + 0.085 * swing + 0.02 * (offset - 1) + 0.02 * wander;
        const double factor = 0.88 + 0.03 * offset + 0.01 * wander;
        const double kva = supplied ? fraction * ratedPhaseKva : 0;
        m_state.outputKva[phase] = kva;
        m_state.outputKw[phase] = kva * factor;
        m_state.outputKvar[phase] = kva * std::sqrt(1 - factor * factor);
        m_state.loadPercent[phase] = 100 * kva / ratedPhaseKva;
        m_state.output.powerFactor[phase] = supplied ? factor : 0;
        m_state.output.currentA[phase] = supplied ? kva * 1000 / m_state.output.voltageV[phase] : 0;
        m_state.bypass.currentA[phase] = onBypass ? m_state.output.currentA[phase] : 0;
        m_state.bypass.powerFactor[phase] = onBypass ? factor : 0;
    }
}

/// What the inverter draws to feed the load.
double UnitModel::dcPowerW() const
{
    return m_state.path == OutputPath::Inverter ? sum(m_state.outputKw) * 1000 / batteryEfficiency : 0;
}

double UnitModel::chargeCurrentA() const
{
    const double limitA = m_image.raw(3023) / 100.0;
    const double taper = (100 - m_state.chargePercent) / (100 - taperPercent);
    return std::min(limitA, 0.2 + limitA * taper);
}

double UnitModel::blockVoltageV() const
{
    constexpr int cellsPerBlock = 6;
    const double charge = m_state.chargePercent / 100;
    switch (m_state.battery) {
    case Battery::ChargeFloat:
        return cellsPerBlock * m_image.value(3019);
    case Battery::ChargeVoltage:
        return cellsPerBlock * m_image.value(3020);
    case Battery::ChargeCurrent:
        return 12.6 + 1.2 * charge;
    case Battery::Discharge:
        return 11.6 + 1.2 * charge - std::min(1.0, 0.35 * m_state.batteryCurrentA / m_image.value(3018));
    case Battery::Standby:
        break;
    }
    return 11.9 + charge;
}

void UnitModel::stepBattery(double seconds)
{
    const bool wasDischarging = m_state.battery == Battery::Discharge;
    const double capacityAh = m_image.value(3018);
    const double loadW = std::max(dcPowerW(), 0.05 * ratedKva(m_identity.address) * 1000);
    if (dcSource() == DcSource::Battery && m_state.path == OutputPath::Inverter) {
        m_state.battery = Battery::Discharge;
        m_state.batteryCurrentA = dcPowerW() / (2 * m_state.batteryVoltageV);
        m_state.chargePercent -= 100 * m_state.batteryCurrentA * seconds / 3600 / capacityAh;
    } else if (dcSource() == DcSource::Rectifier) {
        m_state.batteryCurrentA = chargeCurrentA();
        m_state.chargePercent += 100 * m_state.batteryCurrentA * seconds / 3600 / capacityAh;
        m_state.battery = m_state.chargePercent < taperPercent   ? Battery::ChargeCurrent
                          : m_state.chargePercent < floatPercent ? Battery::ChargeVoltage
                                                                 : Battery::ChargeFloat;
    } else {
        m_state.battery = Battery::Standby;
        m_state.batteryCurrentA = 0;
    }
    m_state.chargePercent = std::clamp(m_state.chargePercent, 0.0, 100.0);
    if (m_state.battery == Battery::Discharge && !wasDischarging)
        m_state.lastDischargeMs = m_state.clockMs;
    approach(m_state.batteryVoltageV, m_image.value(3017) / 2 * blockVoltageV(), seconds, 1.5);

    const double usableAh = std::max(0.0, m_state.chargePercent - emptyPercent) / 100 * capacityAh;
    m_state.remainingMinutes = std::min(10000.0, usableAh * 2 * m_state.batteryVoltageV / loadW * 60);
    updateBatteryLimits();
}

void UnitModel::updateBatteryLimits()
{
    if (m_state.chargePercent <= lowPercent)
        m_state.batteryLow = true;
    else if (m_state.chargePercent >= recoveredPercent)
        m_state.batteryLow = m_state.endOfDischargeLatched = false;

    if (m_state.battery == Battery::Discharge && m_state.chargePercent <= emptyPercent)
        m_state.batteryEmpty = m_state.endOfDischargeLatched = true;
    else if (dcSource() == DcSource::Rectifier)
        m_state.batteryEmpty = false;
}

/// The mains side: what the rectifier takes for the inverter and for charging.
void UnitModel::stepInput()
{
    const bool drawing = m_state.rectifier == Rectifier::Pfc;
    const bool charging = m_state.battery != Battery::Discharge && m_state.battery != Battery::Standby;
    const double chargeW = charging ? 2 * m_state.batteryVoltageV * m_state.batteryCurrentA : 0;
    const double loadW =
        m_state.path == OutputPath::Inverter ? sum(m_state.outputKw) * 1000 / mainsEfficiency : 0;
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const double phaseW = (loadW + chargeW + idlePowerW) / 3;
        m_state.input.powerFactor[phase] = drawing ? inputPowerFactor : 0;
        m_state.input.currentA[phase] =
            drawing ? phaseW / m_state.input.voltageV[phase] / inputPowerFactor : 0;
    }
}

void UnitModel::stepTemperatures(double seconds)
{
    const double load = m_state.path == OutputPath::Inverter ? m_state.loadPercent[0] / 100 : 0;
    approach(m_state.rectifierTemperatureC, 32 + 20 * load, seconds, 90);
    approach(m_state.inverterTemperatureC, 33 + 26 * load, seconds, 90);
    approach(m_state.batteryTemperatureC, m_state.battery == Battery::Discharge ? 31 : 25, seconds, 300);
}

CommandResult UnitModel::startTest(BatteryTest test, std::int64_t durationMs)
{
    // Without the load on the inverter the battery has nothing to feed.
    if (m_state.path != OutputPath::Inverter)
        return CommandResult::NotNow;
    m_state.test = test;
    m_testLeftMs = durationMs;
    return CommandResult::Done;
}

CommandResult UnitModel::command(int code, std::uint16_t argument)
{
    const auto target = [this](Target wanted) {
        m_target = wanted;
        m_state.outputWanted = wanted != Target::Nothing;
        return CommandResult::Done;
    };
    // A transfer moves a load that is there; only starting up brings the output back.
    const auto transfer = [&](Target wanted) {
        return m_target == Target::Nothing ? CommandResult::NotNow : target(wanted);
    };
    switch (static_cast<Command>(code)) {
    case Command::Test:
        if (argument == unitmap::noArgument)
            return startTest(BatteryTest::SelfTest, selfTestMs);
        if (argument == 0 || argument > maxDischargeMinutes)
            return CommandResult::BadArgument;
        return startTest(BatteryTest::Maintenance, std::int64_t(argument) * minuteMs);
    case Command::DischargeToLow:
        return startTest(BatteryTest::Maintenance, untilLow);
    case Command::CancelTest:
        m_state.test = BatteryTest::None;
        return CommandResult::Done;
    case Command::ShutDown:
        return target(Target::Nothing);
    case Command::StartUp:
        return target(Target::Inverter);
    case Command::ShutDownToBypass:
        return transfer(Target::Bypass);
    case Command::ToBypass:
        return transfer(Target::BypassWithReserve);
    case Command::ToInverter:
        return transfer(Target::Inverter);
    case Command::ClearFault:
        m_state.endOfDischargeLatched = false;
        return CommandResult::Done;
    case Command::BuzzerOn:
    case Command::BuzzerOff:
        m_state.buzzerOn = static_cast<Command>(code) == Command::BuzzerOn;
        return CommandResult::Done;
    case Command::ClearHistory:
    case Command::DownloadHistory:
        return CommandResult::Done;
    }
    return CommandResult::UnknownCode;
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
