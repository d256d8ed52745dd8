#pragma once

#include <optional>

namespace simulation {

/// What surrounds a unit and is not of its making. A scenario changes it; the model looks at it in every
/// step.
struct Site
{
    bool mainsOn = true;
    std::optional<double> mainsVoltageV;    ///< of every phase; without one, what the unit is set for
    std::optional<double> mainsFrequencyHz; ///< the same
    bool bypassConnected = true;            ///< the bypass has a feed of its own, from the same mains
    bool batteryConnected = true;
    bool emergencyPressed = false;     ///< the emergency power-off button
    std::optional<double> loadPercent; ///< of the rating; without one, the load breathes around its half
    std::optional<double> rectifierC;  ///< temperatures; without one, they follow from the load
    std::optional<double> inverterC;
    std::optional<double> batteryC;
};

} // namespace simulation
