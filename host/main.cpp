// The reference host: what its command line asks for. How units run and end is told in unitrun.cpp.

#include "checkrunner.h"
#include "collectthread.h"
#include "datafolder.h"
#include "diagnostics.h"
#include "display.h"
#include "exitcode.h"
#include "hostoptions.h"
#include "hoststyle.h"
#include "journal.h"
#include "journalexport.h"
#include "lineoutput.h"
#include "pluginlibrary.h"
#include "screenshots.h"
#include "stopsignals.h"
#include "translation.h"
#include "unitfiles.h"
#include "unitlist.h"
#include "unitrun.h"
#include "windowmode.h"

#include <QApplication>
#include <QDir>

#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace {

ExitCode refuse(const QString& error)
{
    diagnostics::print(error);
    return ExitCode::Configuration;
}

// The option that names units, for a line about a name that is wrong.
QString whereNamed(const HostOptions& options)
{
    return options.isCheck ? QStringLiteral("--check: ") : QStringLiteral("--units: ");
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

ExitCode checkUnits(const HostOptions& options, const QStringList& unitNames)
{
    const PluginLibrary plugin(options.pluginFile); // a driver finds its frame helpers in it
    if (!plugin.factory())
        return refuse(plugin.error());
    LineOutput output(STDOUT_FILENO);
    return runCheck(unitNames, output);
}

// The plugin ends last: collectors, pages and records carry code of it.
ExitCode loadAndRun(const HostOptions& options, const QStringList& unitNames)
{
    Translation translation; // first: the plugin makes its texts once
    const QString error = translation.install(options.language, QCoreApplication::applicationDirPath());
    if (!error.isEmpty())
        return refuse(error);
    const PluginLibrary plugin(options.pluginFile);
    if (!plugin.factory())
        return refuse(plugin.error());
    if (!options.screenshotFolder.isEmpty())
        return takeScreenshots(options, unitNames, *plugin.factory());
    const StopSignals signalWatch;
    return options.wantsWindow() ? runWithWindow(options, *plugin.factory(), signalWatch)
                                 : runUnits(options, unitNames, *plugin.factory(), signalWatch).code;
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
    const bool isInstalled = datafolder::isInstalled(QCoreApplication::applicationDirPath());
    return parseOptions(QCoreApplication::arguments(), isInstalled ? QDir::currentPath() : QString());
}

// Only a window and pages need a display: everything else works where not even Qt's platform plugins are
// installed.
std::unique_ptr<QCoreApplication> makeApplication(const ParsedOptions& parsed, int& argc, char* argv[])
{
    const bool isRunning = parsed.error.isEmpty() && parsed.infoText.isEmpty();
    const bool needsPages = !parsed.options.screenshotFolder.isEmpty();
    if (!isRunning || !(parsed.options.wantsWindow() || needsPages))
        return std::make_unique<QCoreApplication>(argc, argv);
    argc = 1; // a QApplication would take some options for its own, --plugin among them
    if (needsPages)
        hoststyle::prepareOffscreen();
    return display::makeApplication(argc, argv);
}

ExitCode runHost(const ParsedOptions& parsed)
{
    if (!parsed.error.isEmpty())
        return refuse(parsed.error);
    if (!parsed.infoText.isEmpty()) {
        std::fputs(parsed.infoText.toLocal8Bit().constData(), stdout);
        return ExitCode::Ok;
    }
    const QString folderError = datafolder::enter(QCoreApplication::applicationDirPath());
    if (!folderError.isEmpty())
        return refuse(folderError);
    if (parsed.options.exports.isWanted())
        return runExports(parsed.options);

    // Everything that can be wrong is looked at before anything starts.
    const HostOptions& options = parsed.options;
    UnitFiles::recover(unitlist::defaultFile(), unitlist::lineFile());
    const UnitChoice units = unitlist::choose(options.unitNames);
    if (!units.error.isEmpty() && !(units.isRepairable && options.wantsWindow()))
        return refuse(units.isRepairable ? units.error : whereNamed(options) + units.error);
    const QString error = controlError(options.controls, units.names);
    if (!error.isEmpty())
        return refuse(error);
    if (options.isCheck)
        return checkUnits(options, units.names);
    const QString journalError = !options.keepsJournal() ? QString() : Journal::refusal(options.journalFile);
    return journalError.isEmpty() ? loadAndRun(options, units.names) : refuse(journalError);
}

} // namespace

int main(int argc, char* argv[])
{
    if (!holdStandardDescriptors())
        return static_cast<int>(ExitCode::OutputFailed);
    const ParsedOptions parsed = readCommandLine(argc, argv);
    diagnostics::install(parsed.options.isVerbose);
    const auto application = makeApplication(parsed, argc, argv);
    return static_cast<int>(runHost(parsed));
}
