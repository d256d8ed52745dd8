#include "checkrunner.h"

#include "lineoutput.h"
#include "portmanage.h"
#include "unitcheck.h"
#include "unitlist.h"

ExitCode runCheck(const QStringList& unitNames, LineOutput& output)
{
    PortManage ports; // of this thread, without an event loop: its tick does not come in between
    const DriverEntries driver;
    int healthyUnits = 0;
    for (const QString& name : unitNames) {
        const CheckSettings settings = readCheckSettings(name, unitlist::defaultFile());
        if (UnitCheck(name, settings, driver, ports, output).run())
            ++healthyUnits;
    }
    output.write(QStringLiteral("%1 of %2 units answer").arg(healthyUnits).arg(unitNames.size()).toUtf8());
    return healthyUnits == unitNames.size() ? ExitCode::Ok : ExitCode::UnitNotHeard;
}
