#pragma once

#include <array>
#include <cstdint>

namespace simulation {

using Phases = std::array<double, 3>;

// The numbers of these states are those that the registers carry.
enum class Rectifier
{
    Off = 0,
    SoftStart = 1,
    Pfc = 2,
    Battery = 3
};
enum class Inverter
{
    Off = 0,
    SoftStart = 1,
    Run = 2
};
enum class OutputPath
{
    None = 0,
    Bypass = 1,
    Inverter = 2
};
enum class Battery
{
    Standby = 1,
    ChargeCurrent = 2,
    ChargeFloat = 3,
    Discharge = 4,
    ChargeVoltage = 5
};
enum class BatteryTest
{
    None = 0,
    SelfTest = 1,
    Maintenance = 2
};

/// Measurements on one three-phase side: V, A, Hz and power factor.
struct ThreePhase
{
    Phases voltageV{};
    Phases currentA{};
    Phases frequencyHz{};
    Phases powerFactor{};
};

/// What a unit is and does at one moment, in physical units.
struct UnitState
{
    bool mainsPresent = true;
    bool outputWanted = true; ///< false after a shut-down command
    Rectifier rectifier = Rectifier::Pfc;
    Inverter inverter = Inverter::Run;
    OutputPath path = OutputPath::Inverter;
    Battery battery = Battery::ChargeFloat;
    BatteryTest test = BatteryTest::None;
    bool buzzerOn = false;

    bool batteryLow = false;            ///< little left; clears well above its threshold
    bool batteryEmpty = false;          ///< used up; nothing is drawn until the mains is back
    bool endOfDischargeLatched = false; ///< stays until the battery has recovered or faults are cleared

    ThreePhase input;
    ThreePhase bypass;
    ThreePhase output;
    Phases outputKva{};
    Phases outputKw{};
    Phases outputKvar{};
    Phases loadPercent{};

    double batteryVoltageV = 270; ///< of each half; the negative half shows it with a minus sign
    double batteryCurrentA = 0.2; ///< of each half, without direction
    double batteryTemperatureC = 25;
    double chargePercent = 100;
    double remainingMinutes = 0; ///< at the present load
    double rectifierTemperatureC = 42;
    double inverterTemperatureC = 46;

    std::int64_t clockMs = 0;         ///< the unit's own civil time since the epoch
    std::int64_t lastDischargeMs = 0; ///< civil time at which the battery last took over
};

} // namespace simulation
