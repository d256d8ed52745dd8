// The powers of a unit in its present modes: voltages, load, battery, what is drawn from the mains.

#include "battery.h"
#include "unitmodel.h"

#include <algorithm>
#include <cmath>

namespace simulation {

namespace {

constexpr double pi = 3.14159265358979323846;

// Battery.
constexpr double taperPercent = 90; ///< the charging current falls from here on
constexpr double floatPercent = 99;
constexpr double recoveryPercent = 5; ///< above where it was found low, it counts as recovered
constexpr double nominalBlockV = 12;
constexpr double maxRemainingMinutes = 10000;

// Losses.
constexpr double mainsEfficiency = 0.94;
constexpr double batteryEfficiency = 0.93;
constexpr double idlePowerW = 200;
constexpr double inputPowerFactor = 0.99;

/// The rectifier's largest current, of that at rated power and voltage. Once the battery helps, the rectifier
/// holds back a little, or the two would take turns with every breath of the load.
constexpr double rectifierLimit = 1.05;
constexpr double limitWithHelp = 0.95;

constexpr double maxVoltageAdjustV = 10;

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

/// Mains, bypass and output as a meter shows them, with their noise.
void UnitModel::stepVoltages(double seconds)
{
    const double adjustV = std::clamp(m_image.value(3003), -maxVoltageAdjustV, maxVoltageAdjustV);
    const double mainsHz =
        m_image.value(3040) + m_state.mainsFeed.offsetHz + 0.04 * m_frequencyWander.step(seconds, m_random);
    // The inverter follows the bypass as far as it may, so that a transfer meets no step.
    const bool follows =
        m_state.bypassFeed.isGood() && std::abs(m_state.bypassFeed.offsetHz) <= m_image.value(3004);
    const double inverterHz = follows ? mainsHz : m_image.value(3042);
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const double noise = 1 + 0.012 * m_mainsWander[phase].step(seconds, m_random);
        m_state.input.voltageV[phase] = m_image.value(3039) * m_state.mainsFeed.voltagePercent / 100 * noise;
        m_state.input.frequencyHz[phase] = m_state.mainsFeed.isPresent() ? mainsHz : 0;
        m_state.bypass.voltageV[phase] =
            m_image.value(3041) * m_state.bypassFeed.voltagePercent / 100 * noise;
        m_state.bypass.frequencyHz[phase] = m_state.bypassFeed.isPresent() ? mainsHz : 0;
        const double inverterV =
            (m_image.value(3041) + adjustV) * (1 + 0.003 * m_inverterWander[phase].step(seconds, m_random));
        const bool onBypass = m_state.path == OutputPath::Bypass;
        m_state.output.voltageV[phase] =
            onBypass ? m_state.bypass.voltageV[phase] : m_state.isSupplied() * inverterV;
        m_state.output.frequencyHz[phase] = onBypass ? mainsHz : m_state.isSupplied() * inverterHz;
    }
}

/// The load breathes between 39 and 56 % of the rating unless the scenario says otherwise, its phases a
/// little apart. It asks for its power whether it is supplied or not.
void UnitModel::stepLoad(double seconds)
{
    const double ratedPhaseKva = ratedKva(m_identity.address) / 3.0;
    const bool supplied = m_state.isSupplied();
    const bool onBypass = m_state.path == OutputPath::Bypass;
    const double swing =
        std::sin(2 * pi * (static_cast<double>(m_elapsedMs) / 97000.0 + 0.3 * m_identity.address));
    const double base = m_site.loadPercent ? *m_site.loadPercent / 100 : 0.475 + 0.085 * swing;
    m_state.demandPercent = 0;
    m_demandW = 0;
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const auto offset = static_cast<double>(phase);
        const double wander = m_loadWander[phase].step(seconds, m_random);
        const double fraction = base * (1 + 0.04 * (offset - 1) + 0.03 * wander);
        const double factor = 0.88 + 0.03 * offset + 0.01 * wander;
        const double kva = supplied ? fraction * ratedPhaseKva : 0;
        m_state.demandPercent = std::max(m_state.demandPercent, 100 * fraction);
        m_demandW += fraction * ratedPhaseKva * factor * 1000;
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

double UnitModel::inverterLoadW() const
{
    return m_state.path == OutputPath::Inverter ? sum(m_state.outputKw) * 1000 : 0;
}

/// What the rectifier can draw: its current is limited, so the less the lower the mains.
double UnitModel::rectifierLimitW() const
{
    const double meanPercent = sum(m_state.input.voltageV) / 3 / m_image.value(3039);
    return rectifierLimit * ratedKva(m_identity.address) * 1000 * meanPercent * inputPowerFactor;
}

/// How much of the inverter's load the battery feeds: all of it without the rectifier, otherwise what the
/// rectifier cannot. A battery near its end is spared as long as there is a mains.
double UnitModel::batteryShare() const
{
    const double loadW = inverterLoadW();
    if (loadW == 0 || dcSource() == DcSource::None)
        return 0;
    if (dcSource() == DcSource::Battery)
        return 1;
    const double neededW = idlePowerW + loadW / mainsEfficiency;
    const double heldBackW = limitWithHelp * rectifierLimitW();
    const bool helps = m_state.battery == Battery::Discharge;
    if (neededW <= (helps ? heldBackW : rectifierLimitW()) || !m_site.batteryConnected || m_state.batteryLow)
        return 0;
    return std::min(1.0, (neededW - heldBackW) * mainsEfficiency / loadW);
}

double UnitModel::blockVoltageV() const
{
    const double charge = m_state.chargePercent / 100;
    switch (m_state.battery) {
    case Battery::ChargeFloat:
        return block::cells * m_image.value(3019);
    case Battery::ChargeVoltage:
        return block::cells * m_image.value(3020);
    case Battery::ChargeCurrent:
        return 12.6 + 1.2 * charge;
    case Battery::Discharge:
        return block::loadedVoltageV(charge, m_state.batteryCurrentA / capacityAh());
    case Battery::Disconnected:
        return 0;
    case Battery::Standby:
        break;
    }
    return block::openVoltageV(charge);
}

double UnitModel::endBlockVoltageV(double rate) const
{
    return block::cells * block::endVoltagePerCellV(rate, m_image.value(3022), m_image.value(3021));
}

void UnitModel::stepBattery(double seconds)
{
    if (m_site.batteryConnected == (m_state.battery == Battery::Disconnected))
        switchBattery();
    m_batteryShare = batteryShare();
    if (!m_site.batteryConnected) {
        m_state.batteryCurrentA = 0;
    } else if (m_batteryShare > 0) {
        discharge(seconds);
    } else if (dcSource() == DcSource::Rectifier) {
        charge(seconds);
    } else {
        m_state.battery = Battery::Standby;
        m_state.batteryCurrentA = 0;
    }
    m_state.chargePercent = std::clamp(m_state.chargePercent, 0.0, 100.0);
    approach(m_state.batteryVoltageV, m_image.value(3017) / 2 * blockVoltageV(), seconds, 1.5);
    stepBatteryLimits();
}

/// A battery that is switched shows its voltage, or none, at once.
void UnitModel::switchBattery()
{
    m_state.battery = m_site.batteryConnected ? Battery::Standby : Battery::Disconnected;
    m_state.batteryVoltageV = m_image.value(3017) / 2 * blockVoltageV();
}

void UnitModel::discharge(double seconds)
{
    if (m_state.battery != Battery::Discharge)
        m_state.lastDischargeMs = m_state.clockMs;
    m_state.battery = Battery::Discharge;
    m_state.batteryCurrentA =
        m_batteryShare * inverterLoadW() / batteryEfficiency / (2 * m_state.batteryVoltageV);
    m_state.chargePercent -= 100 * m_state.batteryCurrentA * seconds / 3600 / capacityAh();
}

/// Full current, then constant voltage while the current falls, then float. Without equalizing the float
/// voltage does it all. The load comes first: the battery gets what the rectifier has left.
void UnitModel::charge(double seconds)
{
    const bool equalizes = m_image.raw(3045) == 1;
    const double spareW = rectifierLimitW() - idlePowerW - inverterLoadW() / mainsEfficiency;
    const double limitA = std::clamp(spareW / (2 * m_state.batteryVoltageV), 0.0, m_image.raw(3023) / 100.0);
    const double taper = (100 - m_state.chargePercent) / (100 - taperPercent);
    m_state.batteryCurrentA = std::min(limitA, 0.2 + limitA * taper);
    m_state.chargePercent += 100 * m_state.batteryCurrentA * seconds / 3600 / capacityAh();
    if (m_state.chargePercent < taperPercent)
        m_state.battery = Battery::ChargeCurrent;
    else if (m_state.chargePercent < floatPercent && equalizes)
        m_state.battery = Battery::ChargeVoltage;
    else
        m_state.battery = Battery::ChargeFloat;
}

/// How long the battery lasts at the present load, and whether it is near its end or there.
void UnitModel::stepBatteryLimits()
{
    const bool discharging = m_state.battery == Battery::Discharge;
    const double halfV = discharging ? m_state.batteryVoltageV : m_image.value(3017) / 2 * nominalBlockV;
    const double loadW = std::max(m_demandW, 0.05 * ratedKva(m_identity.address) * 1000);
    const double rate = loadW / batteryEfficiency / (2 * halfV) / capacityAh();
    const double endV = endBlockVoltageV(rate);
    const double usable = m_state.chargePercent / 100 - block::chargeAtVoltage(endV, rate);
    m_state.remainingMinutes =
        m_site.batteryConnected ? std::clamp(usable / rate * 60, 0.0, maxRemainingMinutes) : 0;

    const double loadedV = block::loadedVoltageV(m_state.chargePercent / 100, rate);
    if (discharging && loadedV <= endV * m_image.value(3030) && !m_state.batteryLow) {
        m_state.batteryLow = true;
        m_lowAtPercent = m_state.chargePercent;
    } else if (!discharging &&
               m_state.chargePercent >= std::min(floatPercent, m_lowAtPercent + recoveryPercent)) {
        m_state.batteryLow = m_state.endOfDischargeLatched = false;
    }

    if (discharging && loadedV <= endV) {
        m_state.batteryEmpty = m_state.endOfDischargeLatched = true;
        const bool startsByItself = m_image.raw(3054) == 0; // this switch reads 0 as "enable"
        if (!startsByItself && !m_state.mainsFeed.isGood())
            aimFor(Target::Nothing);
    } else if (dcSource() == DcSource::Rectifier) {
        m_state.batteryEmpty = false;
    }
}

/// The mains side: what the rectifier takes for the inverter and for charging.
void UnitModel::stepInput()
{
    const bool drawing = m_state.rectifier == Rectifier::Pfc;
    const bool charging = drawing && m_state.battery != Battery::Discharge;
    const double chargeW = charging ? 2 * m_state.batteryVoltageV * m_state.batteryCurrentA : 0;
    const double loadW = (1 - m_batteryShare) * inverterLoadW() / mainsEfficiency;
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
    const bool discharging = m_state.battery == Battery::Discharge;
    approach(m_state.rectifierTemperatureC, 32 + 20 * load, seconds, 90);
    approach(m_state.inverterTemperatureC, 33 + 26 * load, seconds, 90);
    approach(m_state.batteryTemperatureC, discharging ? 31 : 25, seconds, 300);
    m_state.rectifierTemperatureC = m_site.rectifierC.value_or(m_state.rectifierTemperatureC);
    m_state.inverterTemperatureC = m_site.inverterC.value_or(m_state.inverterTemperatureC);
    m_state.batteryTemperatureC = m_site.batteryC.value_or(m_state.batteryTemperatureC);
}

} // namespace simulation
