#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace simulation {

/// The text of a scenario: of a built-in one by its name, or of a file. Nothing when it cannot be read, with
/// one line in `error`.
std::optional<QByteArray> scenarioText(const QString& nameOrPath, QString* error);

/// When a unit begins the scenario, in milliseconds of virtual time: at once, but built-in ones staggered by
/// the unit's address.
std::int64_t scenarioDelayMs(const QString& nameOrPath, int address);

} // namespace simulation
