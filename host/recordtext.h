#pragma once

#include "unitstate.h"

#include <QStringList>

/// Events and values as lines for people. Pure functions.
namespace recordtext {

/// What happened, without time and unit; empty for events that say nothing new in a line (the values, and
/// the echoes of other events). eventTexts are the plugin's, by event code.
QString describe(int type, const QVariantMap& record, const QStringList& eventTexts);

/// How the unit is. logRow is the plugin's data-log row made from the live values.
QString status(const UnitState& state, const QStringList& logRow);

} // namespace recordtext
