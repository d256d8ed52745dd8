#pragma once

#include <algorithm>
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
    Disconnected = 0,
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

/// A feed without its wandering: where it stands against what the unit is set for, and what the unit makes
/// of that. Decisions look here, so that no alarm flickers with the noise of a measurement.
struct Feed
{
    double voltagePercent = 100; ///< of the rated voltage; 0 when it is not there
    double offsetHz = 0;         ///< from the rated frequency
    bool tooLow = false;
    bool tooHigh = false;
    bool tooSlow = false;
    bool tooFast = false;

    bool isPresent() const { return voltagePercent > 0; }
    bool isGood() const { return !tooLow && !tooHigh && !tooSlow && !tooFast; }
};

/// What a unit is and does at one moment, in physical units.
struct UnitState
{
    Feed mainsFeed;
    Feed bypassFeed;
    bool outputWanted = true; ///< false after a shut-down command
    Rectifier rectifier = Rectifier::Pfc;
    Inverter inverter = Inverter::Run;
    OutputPath path = OutputPath::Inverter;
    Battery battery = Battery::ChargeFloat;
    BatteryTest test = BatteryTest::None;
    bool buzzerOn = false;

    bool batteryLow = false;            ///< near its end (DOD); clears well above
    bool batteryEmpty = false;          ///< at its end (EOD); nothing is drawn until the mains is back
    bool endOfDischargeLatched = false; ///< stays until the battery has recovered or faults are cleared
    bool selfTestFailed = false;        ///< stays until faults are cleared
    bool overloadLatched = false; ///< the inverter has given up; until the load has been low for a while
    bool emergencyOff = false;    ///< stays until faults are cleared with the button released

    ThreePhase input;
    ThreePhase bypass;
    ThreePhase output;
    Phases outputKva{};
    Phases outputKw{};
    Phases outputKvar{};
    Phases loadPercent{};
    double demandPercent = 0; ///< what the largest phase asks for, supplied or not

    double batteryVoltageV = 270; ///< of each half; the negative half shows it with a minus sign
    double batteryCurrentA = 0.2; ///< of each half, without direction
    double batteryTemperatureC = 25;
    double chargePercent = 100;
    double remainingMinutes = 0; ///< at the present load
    double rectifierTemperatureC = 42;
    double inverterTemperatureC = 46;

    std::int64_t clockMs = 0;         ///< the unit's own civil time since the epoch
    std::int64_t lastDischargeMs = 0; ///< civil time at which the battery last took over
    int daysRunning = 0;

    bool isSupplied() const { return path != OutputPath::None; }
    double largestLoadPercent() const { return *std::max_element(loadPercent.begin(), loadPercent.end()); }
};

} // namespace simulation
