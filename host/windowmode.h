#pragma once

#include "exitcode.h"

class CollectThread;
class StopSignals;
struct HostOptions;

/// Runs the units with a window, and runs them anew when the user changed the configuration there. Files that
/// are wrong, or not there yet, are put into the user's hands first: nothing starts before they are right.
/// GUI thread. The plugin, whose factory this is, must outlive the call.
ExitCode runWithWindow(const HostOptions& options, CollectThread& factory, const StopSignals& signalWatch);
