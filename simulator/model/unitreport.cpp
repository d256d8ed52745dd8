#include "unitreport.h"

#include "alarmrules.h"
#include "settings.h"

#include <QStringBuilder>

#include <algorithm>

namespace simulation {

namespace {

// Left when a unit is started.
constexpr int batteryWarrantyDays = 812;
constexpr int unitWarrantyDays = 1097;

enum WorkMode
{
    NoSupply = 0,
    MainsSupply = 1,
    BatterySupply = 2,
    CombinedSupply = 3,
    BypassSupply = 4
};

WorkMode workModeOf(const UnitState& state)
{
    switch (state.path) {
    case OutputPath::None:
        return NoSupply;
    case OutputPath::Bypass:
        return BypassSupply;
    case OutputPath::Inverter:
        break;
    }
    if (state.battery != Battery::Discharge)
        return MainsSupply;
    return state.rectifier == Rectifier::Pfc ? CombinedSupply : BatterySupply;
}

void reportThreePhase(const ThreePhase& side, int voltagePoint, RegisterImage& image)
{
    image.set(voltagePoint, side.voltageV);
    image.set(voltagePoint + 3, side.currentA);
    image.set(voltagePoint + 6, side.frequencyHz);
    image.set(voltagePoint + 9, side.powerFactor);
}

void reportBattery(const UnitState& state, RegisterImage& image)
{
    image.set(4101, static_cast<int>(state.battery));
    // The negative half carries the minus sign in voltage and current: readers print both halves one after
    // the other. Whether the battery is charged or discharged is told by its status alone.
    image.set(4103, state.batteryVoltageV);
    image.set(4104, -state.batteryVoltageV);
    image.set(4105, state.batteryCurrentA);
    image.set(4106, -state.batteryCurrentA);
    image.set(4107, state.batteryTemperatureC);
    image.set(4108, image.value(3017));
    image.set(4109, image.value(3018));
    image.set(4110, state.remainingMinutes);
    image.set(4111, state.chargePercent);
    image.set(4259, static_cast<int>(state.test));
    image.setDate(4268, state.lastDischargeMs);
}

/// The flow points steer a diagram of paths, so no two of them may draw power both ways: "inverter on" means
/// that it feeds the load, "battery in use" that it is discharged, or charged while the inverter draws
/// nothing. A rectifier that the battery helps is shown to draw, and the battery to feed the inverter.
void reportFlow(const UnitState& state, RegisterImage& image)
{
    const bool discharging = state.battery == Battery::Discharge;
    const bool charging =
        !discharging && state.rectifier == Rectifier::Pfc && state.battery != Battery::Disconnected;
    const bool onInverter = state.path == OutputPath::Inverter;
    image.set(4218, state.path == OutputPath::Bypass);
    image.set(4219, state.rectifier == Rectifier::SoftStart || state.rectifier == Rectifier::Pfc);
    image.set(4220, state.rectifier == Rectifier::Pfc && !discharging);
    image.set(4221, onInverter);
    image.set(4222, onInverter);
    image.set(4223, state.isSupplied());
    image.set(4224, discharging || (charging && !onInverter));
}

void reportOutput(const UnitState& state, RegisterImage& image)
{
    reportThreePhase(state.output, 4163, image);
    image.set(4161, static_cast<int>(state.path));
    image.set(4175, state.outputKva);
    image.set(4178, state.outputKw);
    image.set(4181, state.outputKvar);
    image.set(4184, state.loadPercent);
}

} // namespace

int ratedKva(int address)
{
    constexpr int sizes[] = {30, 20, 10};
    return sizes[(address - 1) % 3];
}

void reportIdentity(const UnitIdentity& identity, RegisterImage& image)
{
    const int rated = ratedKva(identity.address);
    const QByteArray address = QByteArray::number(identity.address).rightJustified(3, '0');
    const QByteArray type = "NW-33 " + QByteArray::number(rated) + "K";
    const QByteArray serial = "NW33" + QByteArray::number(rated) + "K2411" + address;
    image.setText(4000, "Nordwind Power");
    image.setText(4016, type);
    image.setText(4064, serial);
    image.setText(4080, identity.name);
    image.set(4097, 103);
    image.set(4098, 215);
    image.set(4132, 3);
    image.set(4162, 3);
    image.set(4191, 3);
    image.set(4243, rated);
    image.set(4248, 2);
    image.setText(4251, "R1.4");
    image.setText(4255, "I1.6");

    fillInitialSettings(image);
    image.set(3037, rated);
    image.set(3038, rated);
    image.set(3074, identity.address);
    image.setText(3077, type);
    image.setText(3087, "Nordwind Power");
    image.setText(3109, serial);
    image.setText(3150, "+49 30 5550100");
}

void reportState(const UnitState& state, RegisterImage& image)
{
    image.setDate(3103, state.clockMs);
    reportBattery(state, image);
    reportThreePhase(state.input, 4133, image);
    reportOutput(state, image);
    image.set(4190, state.bypassFeed.isGood());
    reportThreePhase(state.bypass, 4192, image);
    reportFlow(state, image);
    image.set(4239, static_cast<int>(state.rectifier));
    image.set(4240, static_cast<int>(state.inverter));
    image.set(4241, state.rectifierTemperatureC);
    image.set(4242, state.inverterTemperatureC);
    for (int i = 0; i < 4; ++i) // rated input and output voltage and frequency are settings
        image.set(4244 + i, image.value(3039 + i));
    image.set(4250, workModeOf(state));
    image.set(4274, std::max(0, batteryWarrantyDays - state.daysRunning));
    image.set(4275, std::max(0, unitWarrantyDays - state.daysRunning));
    for (const AlarmRule& rule : alarmRules)
        image.alarms[static_cast<std::size_t>(rule.index)] = rule.isActive(state) ? 1 : 0;
}

} // namespace simulation
