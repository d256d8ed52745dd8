// The reference host: how an application loads the plugin, runs units and ends them. The order of the
// objects in runUnits() is the order that every host has to keep.

#include "collectthread.h"
#include "diagnostics.h"
#include "exitcode.h"
#include "headlessrunner.h"
#include "hostoptions.h"
#include "lineoutput.h"
#include "pluginlibrary.h"
#include "portmanagerthread.h"
#include "stopsignals.h"
#include "unitlist.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <unistd.h>

namespace {

ExitCode refuse(const QString& error)
{
    diagnostics::print(error);
    return ExitCode::Configuration;
}

// Every unit that a command is meant for must be one that runs.
QString controlError(const QList<ControlRequest>& controls, const QStringList& unitNames)
{
    for (const ControlRequest& request : controls) {
        const QString error = unitlist::select(unitNames, {request.unitName}).error;
        if (!error.isEmpty())
            return QStringLiteral("--control: %1").arg(error);
    }
    return {};
}

using Collectors = std::vector<std::unique_ptr<CollectThread>>;

Collectors makeCollectors(CollectThread& factory, PortManage* ports, int count)
{
    Collectors collectors;
    for (int i = 0; i < count; ++i)
        collectors.emplace_back(factory.create(ports));
    return collectors;
}

ExitCode runUnits(const HostOptions& options, const QStringList& unitNames)
{
    // Ends last: collectors, pages and records carry code of the plugin.
    const PluginLibrary plugin(options.pluginFile);
    if (!plugin.factory())
        return refuse(plugin.error());
    const PortManagerThread ports; // outlives the collectors, which hold its ports
    Collectors collectors = makeCollectors(*plugin.factory(), ports.manager(), unitNames.size());
    if (std::count(collectors.begin(), collectors.end(), nullptr) != 0)
        return refuse(QStringLiteral("the plugin made no collector for a unit"));

    LineOutput output(STDOUT_FILENO);
    const StopSignals signalWatch;
    HeadlessRunner runner(options, unitNames, std::move(collectors), plugin.factory()->getEventLogDesc(),
                          output);
    QObject::connect(&signalWatch, &StopSignals::stopRequested, &runner, &HeadlessRunner::stop);
    return runner.run();
}

ExitCode runHost(const QStringList& arguments)
{
    const ParsedOptions parsed = parseOptions(arguments);
    if (!parsed.error.isEmpty())
        return refuse(parsed.error);
    if (!parsed.infoText.isEmpty()) {
        std::fputs(parsed.infoText.toLocal8Bit().constData(), stdout);
        return ExitCode::Ok;
    }
    diagnostics::install(parsed.options.isVerbose);

    // Everything that can be wrong is looked at before anything starts.
    const UnitList configured = unitlist::read(unitlist::defaultFile());
    if (!configured.error.isEmpty())
        return refuse(configured.error);
    const UnitList units = unitlist::select(configured.names, parsed.options.unitNames);
    if (!units.error.isEmpty())
        return refuse(QStringLiteral("--units: %1").arg(units.error));
    const QString error = controlError(parsed.options.controls, units.names);
    if (!error.isEmpty())
        return refuse(error);
    return runUnits(parsed.options, units.names);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication app(argc, argv);
    return static_cast<int>(runHost(QCoreApplication::arguments()));
}
