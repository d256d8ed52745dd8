// The reference host: how an application loads the plugin, runs units and ends them. The order of the
// objects in runUnits() is the order that every host has to keep.

#include "checkrunner.h"
#include "collectthread.h"
#include "diagnostics.h"
#include "exitcode.h"
#include "headlessrunner.h"
#include "hostoptions.h"
#include "hoststyle.h"
#include "journal.h"
#include "journalexport.h"
#include "lineoutput.h"
#include "picturefolder.h"
#include "pluginlibrary.h"
#include "portmanagerthread.h"
#include "screenshotrun.h"
#include "stopsignals.h"
#include "unitjournal.h"
#include "unitlist.h"

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <fcntl.h>
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

ExitCode checkUnits(const HostOptions& options, const QStringList& unitNames)
{
    const PluginLibrary plugin(options.pluginFile); // a driver finds its frame helpers in it
    if (!plugin.factory())
        return refuse(plugin.error());
    LineOutput output(STDOUT_FILENO);
    return runCheck(unitNames, output);
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

    const StopSignals signalWatch;
    QElapsedTimer runTime;
    runTime.start();
    LineOutput output(STDOUT_FILENO, [&] {
        return StopSignals::isPending() ||
               (options.seconds > 0 && runTime.hasExpired(options.seconds * 1000LL));
    });
    const QStringList eventTexts = plugin.factory()->getEventLogDesc();
    const auto journal = makeJournal(options, *plugin.factory()); // ends after the last event
    const auto unitJournals = makeUnitJournals(options, unitNames, collectors, eventTexts, journal.get());
    HeadlessRunner runner(options, unitNames, std::move(collectors), eventTexts, output);
    QObject::connect(&signalWatch, &StopSignals::stopRequested, &runner, &HeadlessRunner::stop);
    return runner.run();
}

ExitCode takeScreenshots(const HostOptions& options, const QString& unitName)
{
    constexpr int defaultLimitS = 240; // twice the demo's scenario
    PictureFolder folder(options.screenshotFolder);
    if (!folder.error().isEmpty())
        return refuse(QStringLiteral("--screenshots ") + folder.error());
    hoststyle::apply();
    const PluginLibrary plugin(options.pluginFile);
    if (!plugin.factory())
        return refuse(plugin.error());
    const PortManagerThread ports;
    Collectors collectors = makeCollectors(*plugin.factory(), ports.manager(), 1);
    if (!collectors.front())
        return refuse(QStringLiteral("the plugin made no collector for a unit"));

    const StopSignals signalWatch;
    LineOutput output(STDOUT_FILENO, StopSignals::isPending);
    UnitSession session(unitName, std::move(collectors.front()),
                        options.isPolling ? UnitSession::Cycles::Polled : UnitSession::Cycles::OwnThread);
    ScreenshotRun run(session, folder, output, options.seconds > 0 ? options.seconds : defaultLimitS);
    QObject::connect(&signalWatch, &StopSignals::stopRequested, &run, &ScreenshotRun::stop);
    const ExitCode code = run.run();
    if (!run.error().isEmpty())
        diagnostics::print(run.error());
    return code;
}

// Needs neither the plugin nor any unit's settings.
ExitCode runExports(const HostOptions& options)
{
    const ExportOptions& exports = options.exports;
    ExportRequest request{options.journalFile, exports.eventsFile, exports.fromUtcMs, exports.toUtcMs,
                          exports.unitName};
    QString error;
    if (!exports.eventsFile.isEmpty())
        error = journalexport::writeEvents(request);
    request.targetFile = exports.logFile;
    if (error.isEmpty() && !exports.logFile.isEmpty())
        error = journalexport::writeLog(request);
    return error.isEmpty() ? ExitCode::Ok : refuse(error);
}

// A descriptor that the caller closed would be given to the next file that is opened: lines for people would
// then go to a serial port or a socket.
bool holdStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) == -1 && ::open("/dev/null", O_RDWR) != descriptor)
            return false;
    }
    return true;
}

// Before the application object is made, for its kind depends on the options.
ParsedOptions readCommandLine(int& argc, char* argv[])
{
    const QCoreApplication reader(argc, argv);
    return parseOptions(QCoreApplication::arguments());
}

// Only pages need a display: everything else works where not even Qt's platform plugins are installed.
std::unique_ptr<QCoreApplication> makeApplication(const HostOptions& options, int& argc, char* argv[])
{
    if (options.screenshotFolder.isEmpty())
        return std::make_unique<QCoreApplication>(argc, argv);
    hoststyle::prepareOffscreen();
    argc = 1; // a QApplication would take some options for its own, --plugin among them
    return std::make_unique<QApplication>(argc, argv);
}

ExitCode runHost(const ParsedOptions& parsed)
{
    if (!parsed.error.isEmpty())
        return refuse(parsed.error);
    if (!parsed.infoText.isEmpty()) {
        std::fputs(parsed.infoText.toLocal8Bit().constData(), stdout);
        return ExitCode::Ok;
    }
    if (parsed.options.exports.isWanted())
        return runExports(parsed.options);

    // Everything that can be wrong is looked at before anything starts.
    const UnitList configured = unitlist::read(unitlist::defaultFile());
    if (!configured.error.isEmpty())
        return refuse(configured.error);
    const UnitList units = unitlist::select(configured.names, parsed.options.unitNames);
    if (!units.error.isEmpty())
        return refuse((parsed.options.isCheck ? QStringLiteral("--check: %1") : QStringLiteral("--units: %1"))
                          .arg(units.error));
    QString error = controlError(parsed.options.controls, units.names);
    if (error.isEmpty())
        error = unitlist::lineError(QStringLiteral("serial.ini"), unitlist::defaultFile(), units.names);
    if (!error.isEmpty())
        return refuse(error);
    if (parsed.options.isCheck)
        return checkUnits(parsed.options, units.names);
    if (!parsed.options.screenshotFolder.isEmpty())
        return takeScreenshots(parsed.options, units.names.constFirst());
    const QString journalFile = parsed.options.journalFile;
    const QString journalError = journalFile.isEmpty() ? QString() : Journal::refusal(journalFile);
    if (!journalError.isEmpty())
        return refuse(journalError);
    return runUnits(parsed.options, units.names);
}

} // namespace

int main(int argc, char* argv[])
{
    if (!holdStandardDescriptors())
        return static_cast<int>(ExitCode::OutputFailed);
    const ParsedOptions parsed = readCommandLine(argc, argv);
    diagnostics::install(parsed.options.isVerbose);
    const auto application = makeApplication(parsed.options, argc, argv);
    return static_cast<int>(runHost(parsed));
}
