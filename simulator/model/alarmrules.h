#pragma once

#include "unitstate.h"

namespace simulation {

/// When a unit shows an alarm: its index (its point is 2000 + index) and the condition, looked at after every
/// model step. An alarm clears as soon as its condition no longer holds.
struct AlarmRule
{
    int index;
    bool (*isActive)(const UnitState&);
};

// What more than one alarm looks at.
namespace alarms {

constexpr double hotPartC = 80;
constexpr double hotBatteryC = 45;
constexpr double coldBatteryC = 0;
constexpr double lastMinutes = 5;

inline bool inverterCarries(const UnitState& unit, double percent)
{
    return unit.path == OutputPath::Inverter && unit.largestLoadPercent() > percent;
}

inline bool bypassCarries(const UnitState& unit, double percent)
{
    return unit.path == OutputPath::Bypass && unit.largestLoadPercent() > percent;
}

inline bool isPartHot(const UnitState& unit)
{
    return unit.rectifierTemperatureC > hotPartC || unit.inverterTemperatureC > hotPartC;
}

inline bool isMinor(const UnitState& unit)
{
    return !unit.mainsFeed.isGood() || !unit.bypassFeed.isGood() || unit.batteryLow ||
           unit.battery == Battery::Disconnected || unit.largestLoadPercent() > 105 || isPartHot(unit);
}

} // namespace alarms

using State = const UnitState&;

// clang-format off
constexpr AlarmRule alarmRules[] = {
    // The unit as a whole
    { 18, [](State unit) { return unit.emergencyOff; }},                       // emergency alert
    { 19, [](State unit) { return alarms::isMinor(unit); }},                   // minor alarm
    { 20, [](State unit) { return unit.path == OutputPath::Bypass; }},         // bypass power supply
    { 21, [](State unit) { return unit.battery == Battery::Discharge; }},      // battery powered
    { 22, [](State unit) { return unit.batteryLow; }},                         // low battery (DOD)
    { 23, [](State unit) { return unit.batteryEmpty; }},                       // low battery (EOD)
    { 24, [](State unit) { return !unit.bypassFeed.isGood(); }},               // bypass failure
    { 28, [](State unit) { return unit.battery == Battery::Disconnected; }},   // battery switch is off
    { 29, [](State unit) { return unit.emergencyOff; }},                       // emergency shutdown
    // Output and bypass
    {132, [](State unit) { return unit.largestLoadPercent() > 105; }},         // output overload 105%
    {133, [](State unit) { return unit.largestLoadPercent() > 110; }},
    {134, [](State unit) { return unit.largestLoadPercent() > 125; }},
    {135, [](State unit) { return unit.largestLoadPercent() > 150; }},
    {139, [](State unit) { return unit.overloadLatched && unit.path == OutputPath::Bypass; }}, // output transferred to bypass
    {141, [](State unit) { return unit.largestLoadPercent() > 105; }},         // output overload alarm
    {160, [](State unit) { return unit.bypassFeed.tooHigh; }},                 // bypass overvoltage
    {161, [](State unit) { return unit.bypassFeed.tooLow; }},                  // bypass undervoltage
    {162, [](State unit) { return unit.bypassFeed.tooFast; }},                 // bypass frequency too high
    {163, [](State unit) { return unit.bypassFeed.tooSlow; }},                 // bypass frequency too low
    {183, [](State unit) { return unit.emergencyOff; }},                       // emergency shutdown
    {198, [](State unit) { return alarms::inverterCarries(unit, 105); }},      // inverter overload 105%
    {199, [](State unit) { return alarms::inverterCarries(unit, 110); }},
    {200, [](State unit) { return alarms::inverterCarries(unit, 125); }},
    {201, [](State unit) { return alarms::inverterCarries(unit, 150); }},
    {202, [](State unit) { return alarms::bypassCarries(unit, 125); }},        // bypass overload 125%
    {203, [](State unit) { return alarms::bypassCarries(unit, 135); }},
    {204, [](State unit) { return alarms::bypassCarries(unit, 150); }},
    {205, [](State unit) { return alarms::bypassCarries(unit, 200); }},
    {206, [](State unit) { return alarms::inverterCarries(unit, 105); }},      // inverter overload alarm
    {207, [](State unit) { return alarms::bypassCarries(unit, 125); }},        // bypass overload alarm
    {208, [](State unit) { return unit.battery == Battery::Discharge && unit.remainingMinutes < alarms::lastMinutes; }}, // backup time
    {212, [](State unit) { return unit.endOfDischargeLatched; }},              // discharge terminated
    {213, [](State unit) { return unit.batteryTemperatureC > alarms::hotBatteryC; }}, // battery over temperature
    {214, [](State unit) { return unit.batteryTemperatureC < alarms::coldBatteryC; }},
    {215, [](State unit) { return unit.selfTestFailed; }},                     // battery self-test failed
    {243, [](State unit) { return !unit.bypassFeed.isGood(); }},               // bypass abnormal
    {244, [](State unit) { return unit.outputWanted && !unit.isSupplied(); }}, // output abnormal
    // Rectifier and battery
    {256, [](State unit) { return unit.mainsFeed.tooHigh; }},                  // input overvoltage
    {257, [](State unit) { return unit.mainsFeed.tooLow; }},                   // input undervoltage
    {258, [](State unit) { return unit.mainsFeed.tooFast; }},                  // input overfrequency
    {259, [](State unit) { return unit.mainsFeed.tooSlow; }},                  // input underfrequency
    {272, [](State unit) { return unit.battery == Battery::Disconnected; }},   // abnormal battery connection
    {273, [](State unit) { return unit.batteryTemperatureC > alarms::hotBatteryC; }}, // battery over temperature
    {274, [](State unit) { return unit.selfTestFailed; }},                     // battery self-test failed
    {276, [](State unit) { return unit.batteryLow; }},                         // DOD undervoltage
    {277, [](State unit) { return unit.batteryEmpty; }},                       // EOD undervoltage
    {279, [](State unit) { return unit.batteryTemperatureC < alarms::coldBatteryC; }}, // low battery temperature
    {320, [](State unit) { return unit.rectifierTemperatureC > alarms::hotPartC; }}, // rectifier over temperature
    {335, [](State unit) { return unit.emergencyOff; }},                       // emergency shutdown
    {368, [](State unit) { return !unit.mainsFeed.isGood(); }},                // input abnormal
    // Inverter
    {404, [](State unit) { return alarms::inverterCarries(unit, 105); }},      // inverter module overload 105%
    {405, [](State unit) { return alarms::inverterCarries(unit, 110); }},
    {406, [](State unit) { return alarms::inverterCarries(unit, 125); }},
    {407, [](State unit) { return alarms::inverterCarries(unit, 150); }},
    {409, [](State unit) { return alarms::inverterCarries(unit, 105); }},      // inverter module overload alarm
    {448, [](State unit) { return unit.inverterTemperatureC > alarms::hotPartC; }}, // inverter over temperature
    {455, [](State unit) { return unit.emergencyOff; }},                       // emergency shutdown
};
// clang-format on

} // namespace simulation
