#pragma once

#include "scenario.h"

#include <QString>

#include <optional>

namespace simulation {

/// Reads a scenario: one action a line, "TIME ACTION ARGUMENTS", "#" begins a comment; docs/scenarios.md has
/// all of it. `name` is what the text is called in `error`, which gets one line, "NAME:LINE: what is wrong",
/// when the result is nothing. `checkFault` judges the texts of faults; without one there are none.
std::optional<Scenario> parseScenario(const QByteArray& text, const QString& name,
                                      const FaultHook& checkFault, QString* error);

} // namespace simulation
