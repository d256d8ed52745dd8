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

// clang-format off
constexpr AlarmRule alarmRules[] = {
    { 19, [](const UnitState& unit) { return !unit.mainsPresent || unit.batteryLow; }},          // minor alarm
    { 20, [](const UnitState& unit) { return unit.path == OutputPath::Bypass; }},                // bypass power supply
    { 21, [](const UnitState& unit) { return unit.battery == Battery::Discharge; }},             // battery powered
    { 22, [](const UnitState& unit) { return unit.batteryLow; }},                                // low battery (DOD)
    { 23, [](const UnitState& unit) { return unit.batteryEmpty; }},                              // low battery (EOD)
    { 24, [](const UnitState& unit) { return !unit.mainsPresent; }},                             // bypass failure
    {161, [](const UnitState& unit) { return !unit.mainsPresent; }},                             // bypass undervoltage
    {212, [](const UnitState& unit) { return unit.endOfDischargeLatched; }},                     // discharge terminated
    {243, [](const UnitState& unit) { return !unit.mainsPresent; }},                             // bypass abnormal
    {244, [](const UnitState& unit) { return unit.outputWanted && unit.path == OutputPath::None; }}, // output abnormal
    {257, [](const UnitState& unit) { return !unit.mainsPresent; }},                             // input undervoltage
    {276, [](const UnitState& unit) { return unit.batteryLow; }},                                // DOD undervoltage
    {277, [](const UnitState& unit) { return unit.batteryEmpty; }},                              // EOD undervoltage
    {368, [](const UnitState& unit) { return !unit.mainsPresent; }},                             // input abnormal
};
// clang-format on

} // namespace simulation
