// What the actions of a scenario do to a unit. The caller holds the unit's lock.

#include "scenarioforms.h"
#include "simulatedunit.h"
#include "trace.h"

#include <cstdio>

namespace simulation {

namespace {

using Temperature = std::optional<double> Site::*;
// In the order in which the scenario's syntax names them.
constexpr Temperature temperatures[] = {&Site::rectifierC, &Site::inverterC, &Site::batteryC};

} // namespace

void SimulatedUnit::playScenario(int ms)
{
    for (const RandomAlarms::Toggle& toggle : m_randomAlarms.advance(ms))
        m_forced.force(2000 + toggle.index, toggle.active);
    while (const Action* action = m_player.takeDue(m_elapsedMs)) {
        if (m_trace)
            m_trace->scenario(address(), action->text);
        perform(*action);
    }
}

void SimulatedUnit::perform(const Action& action)
{
    const bool isSecondChoice = action.choice == 1; // "off|on", "bad|good"
    const double number = action.numbers[0];
    const int index = static_cast<int>(number);
    Site& site = m_model.site();
    switch (action.verb) {
    case Verb::MainsSwitch:
        site.mainsOn = isSecondChoice;
        site.mainsVoltageV.reset();
        site.mainsFrequencyHz.reset();
        break;
    case Verb::MainsVoltage:
        site.mainsVoltageV = number;
        break;
    case Verb::MainsFrequency:
        site.mainsFrequencyHz = number;
        break;
    case Verb::BypassSwitch:
        site.bypassConnected = isSecondChoice;
        break;
    case Verb::Load:
        site.loadPercent = number;
        break;
    case Verb::LoadNormal:
        site.loadPercent.reset();
        break;
    case Verb::Overload:
        site.loadPercent = overloadPercent;
        break;
    case Verb::Temperature:
        site.*temperatures[action.choice] = number;
        break;
    case Verb::TemperatureNormal:
        (site.*temperatures[action.choice]).reset();
        break;
    case Verb::BatterySwitch:
        site.batteryConnected = isSecondChoice;
        break;
    case Verb::BatteryCharge:
        m_model.setBatteryCharge(number);
        break;
    case Verb::Emergency:
        site.emergencyPressed = isSecondChoice;
        break;
    case Verb::AlarmForced:
        m_forced.force(2000 + index, isSecondChoice);
        break;
    case Verb::AlarmReleased:
        m_forced.release(2000 + index);
        break;
    case Verb::PointForced:
        m_forced.force(index, action.numbers[1]);
        break;
    case Verb::PointReleased:
        m_forced.release(index);
        break;
    case Verb::RandomAlarms:
        m_randomAlarms.begin(index, static_cast<int>(action.numbers[1] * 1000));
        break;
    case Verb::RandomAlarmsEnd:
        for (int alarm = 0; alarm < RandomAlarms::alarmCount; ++alarm)
            m_forced.release(2000 + alarm);
        m_randomAlarms.end();
        break;
    case Verb::Setting:
        m_model.writeSettings(index - 3000, {static_cast<std::uint16_t>(action.numbers[1])});
        break;
    case Verb::Command:
        execute(index,
                action.numberCount > 1 ? static_cast<std::uint16_t>(action.numbers[1]) : unitmap::noArgument);
        break;
    case Verb::Fault:
        if (m_fault) {
            const std::string wrong = m_fault(action.faultText());
            if (!wrong.empty())
                std::fprintf(stderr, "ups-sim: fault in the scenario: %s\n", wrong.c_str());
        }
        break;
    case Verb::Repeat:
        break;
    }
}

} // namespace simulation
