#pragma once

#include "scenario.h"

#include <utility>

namespace simulation {

/// Goes through a scenario as time passes.
class ScenarioPlayer
{
public:
    /// `delayMs` is when the scenario's time 0 is.
    ScenarioPlayer(Scenario scenario, std::int64_t delayMs)
        : m_scenario(std::move(scenario))
        , m_beginMs(delayMs)
    {}

    /// The next action that is due by this virtual time, each once; null when there is none. Valid as long
    /// as the player.
    const Action* takeDue(std::int64_t elapsedMs)
    {
        while (m_next < m_scenario.size()) {
            const Action& action = m_scenario[m_next];
            if (m_beginMs + action.atMs > elapsedMs)
                break;
            ++m_next;
            if (action.verb != Verb::Repeat)
                return &action;
            m_beginMs += action.atMs;
            m_next = 0;
        }
        return nullptr;
    }

private:
    const Scenario m_scenario;
    std::int64_t m_beginMs;
    std::size_t m_next = 0;
};

} // namespace simulation
