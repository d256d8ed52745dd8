#pragma once

#include "exitcode.h"

#include <QStringList>

class CollectThread;
struct HostOptions;

/// Takes pictures of every page of the first unit, then of the window on all units, into the folder that the
/// options name, and prints their files. GUI thread. The plugin, whose factory this is, must outlive the
/// call.
ExitCode takeScreenshots(const HostOptions& options, const QStringList& unitNames, CollectThread& factory);
