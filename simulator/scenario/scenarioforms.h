#pragma once

#include "scenario.h"

namespace simulation {

/// The limits of one number of an action.
struct NumberLimits
{
    double min = 0;
    double max = 0;
};

/// How one action is written. In its syntax a word in small letters stands for itself, "a|b" for one of
/// them, a word in capitals for a number within limits ("TEXT" for the rest of the line).
struct Form
{
    Verb verb;
    const char* syntax;
    NumberLimits limits[2];
};

// clang-format off
constexpr Form forms[] = {
    {Verb::MainsSwitch,       "mains off|on",                                       {}},
    {Verb::MainsVoltage,      "mains voltage VOLTS",                                {{0, 500}}},
    {Verb::MainsFrequency,    "mains frequency HERTZ",                              {{30, 80}}},
    {Verb::BypassSwitch,      "bypass bad|good",                                    {}},
    {Verb::Load,              "load PERCENT",                                       {{0, 250}}},
    {Verb::LoadNormal,        "load normal",                                        {}},
    {Verb::Overload,          "overload",                                           {}},
    {Verb::Temperature,       "temperature rectifier|inverter|battery CELSIUS",     {{-40, 150}}},
    {Verb::TemperatureNormal, "temperature rectifier|inverter|battery normal",      {}},
    {Verb::BatterySwitch,     "battery off|on",                                     {}},
    {Verb::BatteryCharge,     "battery charge PERCENT",                             {{0, 100}}},
    {Verb::Emergency,         "epo off|on",                                         {}},
    {Verb::AlarmForced,       "alarm INDEX off|on",                                 {{0, 511}}},
    {Verb::AlarmReleased,     "alarm INDEX auto",                                   {{0, 511}}},
    {Verb::PointForced,       "point POINT VALUE",                                  {{4000, 4275}, {-32768, 65535}}},
    {Verb::PointReleased,     "point POINT auto",                                   {{4000, 4275}}},
    {Verb::RandomAlarms,      "random alarms COUNT SECONDS",                        {{1, 498}, {0.1, 3600}}},
    {Verb::RandomAlarmsEnd,   "random alarms off",                                  {}},
    {Verb::Setting,           "setting POINT RAW",                                  {{3000, 3163}, {0, 65535}}},
    {Verb::Command,           "command CODE",                                       {{0, 65535}}},
    {Verb::Command,           "command CODE ARGUMENT",                              {{0, 65535}, {0, 65534}}},
    {Verb::Fault,             "fault TEXT",                                         {}},
    {Verb::Repeat,            "repeat",                                             {}},
};

/// Numbers that need not be whole.
constexpr const char* decimalNames[] = {"VOLTS", "HERTZ", "PERCENT", "CELSIUS", "SECONDS", "VALUE"};
// clang-format on

/// What "overload" makes of the load.
constexpr double overloadPercent = 130;

} // namespace simulation
