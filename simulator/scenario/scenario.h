#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace simulation {

/// What an action of a scenario does; the rows of scenarioforms.h tell how each is written.
enum class Verb
{
    MainsSwitch,
    MainsVoltage,
    MainsFrequency,
    BypassSwitch,
    Load,
    LoadNormal,
    Overload,
    Temperature,
    TemperatureNormal,
    BatterySwitch,
    BatteryCharge,
    Emergency,
    AlarmForced,
    AlarmReleased,
    PointForced,
    PointReleased,
    RandomAlarms,
    RandomAlarmsEnd,
    Setting,
    Command,
    Fault,
    Repeat
};

/// One line of a scenario.
struct Action
{
    std::int64_t atMs = 0; ///< virtual time since the scenario began
    Verb verb = Verb::Repeat;
    int choice = 0;                  ///< which of "a|b" was given, the first being 0
    std::array<double, 2> numbers{}; ///< in the order in which they were given
    int numberCount = 0;
    QByteArray text; ///< as given, without its time

    /// What follows the word "fault".
    std::string faultText() const { return text.mid(int(sizeof "fault")).toStdString(); }
};

/// In the order of time; a Repeat can only be the last.
using Scenario = std::vector<Action>;

/// Takes the text behind the word "fault"; what is wrong with it, or empty. One such function checks a text
/// while a scenario is read, another brings the fault about.
using FaultHook = std::function<std::string(const std::string& text)>;

} // namespace simulation
