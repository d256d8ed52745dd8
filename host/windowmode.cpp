#include "windowmode.h"

#include "diagnostics.h"
#include "hostoptions.h"
#include "hoststyle.h"
#include "stopsignals.h"
#include "unitlist.h"
#include "unitrun.h"
#include "unitsdialog.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

namespace {

constexpr int msPerSecond = 1000;

QString reasonFor(const QString& error)
{
    if (!QFileInfo::exists(unitlist::defaultFile()))
        return UnitsDialog::tr("No unit is described yet. Add the first one and save it: "
                               "then the window opens.");
    return UnitsDialog::tr("No unit can run before this is right: %1").arg(error);
}

// False when the user leaves the files as they are.
bool letUserRepair(const QString& error, const QDeadlineTimer& end, const StopSignals& signalWatch)
{
    diagnostics::print(error);
    UnitsDialog dialog(unitlist::defaultFile(), unitlist::lineFile());
    dialog.explain(reasonFor(error));
    QObject::connect(&signalWatch, &StopSignals::stopRequested, &dialog,
                     [&dialog] { dialog.done(QDialog::Rejected); });
    if (!end.isForever())
        QTimer::singleShot(end.remainingTime(), &dialog, [&dialog] { dialog.done(QDialog::Rejected); });
    const bool isSaved = dialog.exec() == QDialog::Accepted;
    QEventLoop untilTested;
    QObject::connect(&dialog, &UnitsDialog::testEnded, &untilTested, &QEventLoop::quit);
    if (dialog.isTesting())
        untilTested.exec();
    return isSaved;
}

// Reads the configuration until it is right, or the user gives up.
UnitChoice chooseUnits(const QStringList& wanted, const QDeadlineTimer& end, const StopSignals& signalWatch)
{
    UnitChoice units = unitlist::choose(wanted);
    while (!units.error.isEmpty() && units.isRepairable && letUserRepair(units.error, end, signalWatch))
        units = unitlist::choose(wanted);
    return units;
}

} // namespace

ExitCode runWithWindow(const HostOptions& options, CollectThread& factory, const StopSignals& signalWatch)
{
    hoststyle::apply();
    HostOptions current = options;
    const QDeadlineTimer end = options.seconds > 0 ? QDeadlineTimer(qint64(options.seconds) * msPerSecond)
                                                   : QDeadlineTimer(QDeadlineTimer::Forever); // of all runs
    UnitChoice units = chooseUnits(options.unitNames, end, signalWatch);
    while (units.error.isEmpty()) {
        if (options.seconds > 0)
            current.seconds = qMax(1, static_cast<int>(end.remainingTime() / msPerSecond));
        const RunEnd run = runUnits(current, units.names, factory, signalWatch);
        if (!run.isForNewUnits)
            return run.code;
        const UnitChoice all = chooseUnits({}, end, signalWatch);
        units.names = unitlist::afterChange(units.names, units.configured, all.configured);
        units.configured = all.configured;
        units.error = all.error;
    }
    if (!units.isRepairable)
        diagnostics::print(QStringLiteral("--units: ") + units.error);
    return ExitCode::Configuration;
}
