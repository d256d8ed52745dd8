// How an application runs units and ends them. The order of the objects in runUnits() is the order that every
// host has to keep.

#include "unitrun.h"

#include "collectthread.h"
#include "diagnostics.h"
#include "headlessrunner.h"
#include "journal.h"
#include "lineoutput.h"
#include "portmanagerthread.h"
#include "stopsignals.h"
#include "unitjournal.h"
#include "unitlist.h"
#include "windowrunner.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <memory>
#include <vector>

#include <unistd.h>

namespace {

using Collectors = std::vector<std::unique_ptr<CollectThread>>;

Collectors makeCollectors(CollectThread& factory, PortManage* ports, int count)
{
    Collectors collectors;
    for (int i = 0; i < count; ++i)
        collectors.emplace_back(factory.create(ports));
    return collectors;
}

std::unique_ptr<Journal> makeJournal(const HostOptions& options, CollectThread& factory)
{
    if (options.journalFile.isEmpty())
        return nullptr;
    return std::make_unique<Journal>(
        JournalSettings{options.journalFile, factory.getDataLogDesc(), options.keepDays}, diagnostics::print);
}

using UnitJournals = std::vector<std::unique_ptr<UnitJournal>>;

UnitJournals makeUnitJournals(const HostOptions& options, const QStringList& unitNames,
                              const Collectors& collectors, const QStringList& eventTexts, Journal* journal)
{
    UnitJournals unitJournals;
    for (size_t i = 0; journal && i < collectors.size(); ++i)
        unitJournals.push_back(std::make_unique<UnitJournal>(unitNames[static_cast<int>(i)], *collectors[i],
                                                             eventTexts, options.logIntervalS, *journal));
    return unitJournals;
}

ExitCode runHeadless(const HostOptions& options, const QStringList& unitNames, Collectors collectors,
                     const QStringList& eventTexts, const StopSignals& signalWatch)
{
    QElapsedTimer runTime;
    runTime.start();
    LineOutput output(STDOUT_FILENO, [&] {
        return StopSignals::isPending() ||
               (options.seconds > 0 && runTime.hasExpired(options.seconds * 1000LL));
    });
    HeadlessRunner runner(options, unitNames, std::move(collectors), eventTexts, output);
    QObject::connect(&signalWatch, &StopSignals::stopRequested, &runner, &HeadlessRunner::stop);
    return runner.run();
}

// Choices are the user's, not of the installation, which several may share and few may write to.
QString choicesFile(const HostOptions& options)
{
    return options.choicesFile.isEmpty()
               ? QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) +
                     QStringLiteral("/window.ini")
               : options.choicesFile;
}

WindowSettings windowSettings(const HostOptions& options, const QStringList& unitNames, PortManage* ports)
{
    const QString deviceFile = unitlist::defaultFile();
    const QSettings parameters(QFileInfo(deviceFile).path() + QStringLiteral("/param.ini"),
                               QSettings::IniFormat);
    return {choicesFile(options),
            parameters.value(QStringLiteral("Language"), 0).toInt(),
            {deviceFile, unitlist::lineFile(), ports, unitNames}};
}

} // namespace

RunEnd runUnits(const HostOptions& options, const QStringList& unitNames, CollectThread& factory,
                const StopSignals& signalWatch, const std::function<void(WindowRunner&)>& prepare)
{
    const PortManagerThread ports; // outlives the collectors, which hold its ports
    Collectors collectors = makeCollectors(factory, ports.manager(), unitNames.size());
    if (std::count(collectors.begin(), collectors.end(), nullptr) != 0) {
        diagnostics::print(QStringLiteral("the plugin made no collector for a unit"));
        return {ExitCode::Configuration};
    }
    const QStringList eventTexts = factory.getEventLogDesc();
    const auto journal = makeJournal(options, factory); // ends after the last event
    const auto unitJournals = makeUnitJournals(options, unitNames, collectors, eventTexts, journal.get());
    if (!options.wantsWindow())
        return {runHeadless(options, unitNames, std::move(collectors), eventTexts, signalWatch)};
    WindowRunner runner(options, unitNames, std::move(collectors),
                        windowSettings(options, unitNames, ports.manager()));
    QObject::connect(&signalWatch, &StopSignals::stopRequested, &runner, &WindowRunner::stop);
    if (prepare)
        prepare(runner);
    return {ExitCode::Ok, runner.run() == WindowRunner::End::UnitsChanged};
}
