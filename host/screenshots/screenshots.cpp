#include "screenshots.h"

#include "collectthread.h"
#include "diagnostics.h"
#include "hostoptions.h"
#include "hoststyle.h"
#include "lineoutput.h"
#include "pagepictures.h"
#include "picturefolder.h"
#include "portmanagerthread.h"
#include "stopsignals.h"
#include "unitrun.h"
#include "unitsession.h"
#include "windowpictures.h"

#include <QTemporaryDir>

#include <memory>

#include <unistd.h>

namespace {

constexpr int defaultLimitS = 240; // twice the demo's scenario

ExitCode refuse(const QString& error)
{
    diagnostics::print(error);
    return ExitCode::Configuration;
}

ExitCode ending(const PictureRun& run)
{
    if (!run.error().isEmpty())
        diagnostics::print(run.error());
    return run.exitCode();
}

ExitCode takePages(const HostOptions& options, const QString& unitName, CollectThread& factory,
                   PictureFolder& folder, LineOutput& output, const StopSignals& signalWatch)
{
    const PortManagerThread ports;
    std::unique_ptr<CollectThread> collector(factory.create(ports.manager()));
    if (!collector)
        return refuse(QStringLiteral("the plugin made no collector for a unit"));
    UnitSession session(unitName, std::move(collector),
                        options.isPolling ? UnitSession::Cycles::Polled : UnitSession::Cycles::OwnThread);
    session.loadConfig();
    PagePictures pictures(session, folder, output, options.seconds);
    QObject::connect(&signalWatch, &StopSignals::stopRequested, &pictures, &PictureRun::stop);
    pictures.run();
    return ending(pictures);
}

// With a journal and choices of its own: nothing of the user's is shown or changed.
ExitCode takeWindow(HostOptions options, const QStringList& unitNames, CollectThread& factory,
                    PictureFolder& folder, LineOutput& output, const StopSignals& signalWatch)
{
    const QTemporaryDir scratch;
    if (!scratch.isValid())
        return refuse(QStringLiteral("no temporary folder: ") + scratch.errorString());
    const int limitS = options.seconds;
    options.screenshotFolder.clear();
    options.seconds = 0;
    options.logIntervalS = 1;
    options.journalFile = scratch.filePath(QStringLiteral("journal.sqlite"));
    options.choicesFile = scratch.filePath(QStringLiteral("window.ini"));
    std::unique_ptr<WindowPictures> pictures;
    const auto prepare = [&](WindowRunner& runner) {
        pictures = std::make_unique<WindowPictures>(runner, folder, output, limitS);
        QObject::connect(&signalWatch, &StopSignals::stopRequested, pictures.get(), &PictureRun::stop);
    };
    const RunEnd end = runUnits(options, unitNames, factory, signalWatch, prepare);
    return pictures ? ending(*pictures) : end.code;
}

} // namespace

ExitCode takeScreenshots(const HostOptions& options, const QStringList& unitNames, CollectThread& factory)
{
    PictureFolder folder(options.screenshotFolder);
    if (!folder.error().isEmpty())
        return refuse(QStringLiteral("--screenshots ") + folder.error());
    hoststyle::apply();
    const StopSignals signalWatch;
    LineOutput output(STDOUT_FILENO, StopSignals::isPending);
    HostOptions limited = options;
    if (limited.seconds == 0)
        limited.seconds = defaultLimitS;
    const ExitCode code = takePages(limited, unitNames.constFirst(), factory, folder, output, signalWatch);
    return code == ExitCode::Ok ? takeWindow(limited, unitNames, factory, folder, output, signalWatch) : code;
}
