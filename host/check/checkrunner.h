#pragma once

#include "exitcode.h"

#include <QStringList>

class LineOutput;

/// Checks the units one after the other and tells what it finds; nothing else runs meanwhile. The plugin must
/// be loaded. UnitNotHeard when a unit did not answer everything.
ExitCode runCheck(const QStringList& unitNames, LineOutput& output);
