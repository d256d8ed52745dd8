#pragma once

#include "exitcode.h"
#include "hostoptions.h"

#include <QStringList>

#include <functional>

class CollectThread;
class StopSignals;
class WindowRunner;

/// How a run of units ended: for good, or because the user changed the configuration at the window.
struct RunEnd
{
    ExitCode code = ExitCode::Ok;
    bool isForNewUnits = false;
};

/// Runs the units with or without a window, as the options want it, until that ends. Main thread. The plugin,
/// whose factory this is, must outlive the call. A window is shown to prepare before it runs.
RunEnd runUnits(const HostOptions& options, const QStringList& unitNames, CollectThread& factory,
                const StopSignals& signalWatch, const std::function<void(WindowRunner&)>& prepare = {});
