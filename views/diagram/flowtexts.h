#pragma once

#include <QtGlobal>

/// What the energy-flow diagram reads from a data map: which point becomes which text.
namespace flowtexts {

/// The texts that points become. Those no panel has a row for are in the blocks' tool tips.
enum Text
{
    BypassVoltage,
    BypassCurrent,
    BypassFrequency,
    BypassStatus,
    InputVoltage,
    InputCurrent,
    InputFrequency,
    OutputVoltage,
    OutputCurrent,
    OutputFrequency,
    ApparentPower,
    ActivePower,
    ReactivePower,
    LoadPercentage,
    OutputMode,
    BatteryVoltage,
    BatteryCurrent,
    BatteryTemperature,
    RemainingTime,
    RemainingCapacity,
    BatteryState,
    RectifierState,
    RectifierTemperature,
    InverterState,
    InverterTemperature,
    SupplyMode,
    PhaseConfiguration,
    DeviceType,
    DeviceName,
    Manufacturer,
    textCount
};

/// The tables of texts that a point's value is an index into.
enum Table
{
    StateTable,
    SupplyModeTable,
    PhaseConfigurationTable,
    OutputModeTable,
    BatteryStateTable,
    RectifierStateTable,
    InverterStateTable,
    tableCount
};

/// One value for each phase, from three points in a row; the phase point says how many of them count.
struct PhaseRow
{
    int phasePoint;
    int firstPoint;
    const char* unit;
    Text text;
};

struct StateRow
{
    int point;
    Table table;
    Text text;
};

/// One number; below the least value that it can have as an integer it is unknown.
struct NumberRow
{
    int point;
    int decimals;
    int least;
    const char* unit;
    Text text;
};

/// The values of two points in a row, or of a run of them.
struct RunRow
{
    int firstPoint;
    const char* unit;
    Text text;
};

constexpr int noLeast = -0x7FFFFFFF;
constexpr int chargePoint = 4111;
constexpr int identityLength = 16; // points, one character each

// clang-format off
constexpr PhaseRow phaseRows[] = {
    {4191, 4192, " V",   BypassVoltage},
    {4191, 4195, " A",   BypassCurrent},
    {4191, 4198, " Hz",  BypassFrequency},
    {4132, 4133, " V",   InputVoltage},
    {4132, 4136, " A",   InputCurrent},
    {4132, 4139, " Hz",  InputFrequency},
    {4162, 4163, " V",   OutputVoltage},
    {4162, 4166, " A",   OutputCurrent},
    {4162, 4169, " Hz",  OutputFrequency},
    {4162, 4175, " kVA", ApparentPower},
    {4162, 4178, " kW",  ActivePower},
    {4162, 4181, " kVA", ReactivePower}, // not kvar: deliberate, as operators know it from the unit's display
    {4162, 4184, " %",   LoadPercentage},
};

constexpr StateRow stateRows[] = {
    {4190, StateTable,              BypassStatus},
    {4250, SupplyModeTable,         SupplyMode},
    {4248, PhaseConfigurationTable, PhaseConfiguration},
    {4161, OutputModeTable,         OutputMode},
    {4101, BatteryStateTable,       BatteryState},
    {4239, RectifierStateTable,     RectifierState},
    {4240, InverterStateTable,      InverterState},
};

constexpr NumberRow numberRows[] = {
    {4241,        1, noLeast, " ℃",   RectifierTemperature},
    {4242,        1, noLeast, " ℃",   InverterTemperature},
    {4107,        1, -10,     " ℃",   BatteryTemperature},
    {4110,        0, 0,       " Min", RemainingTime},
    {chargePoint, 0, 0,       " %",   RemainingCapacity},
};

// The positive and the negative half of the battery.
constexpr RunRow pairRows[] = {
    {4103, " V", BatteryVoltage},
    {4105, " A", BatteryCurrent},
};

constexpr RunRow identityRows[] = {
    {4016, "", DeviceType},
    {4080, "", DeviceName},
    {4000, "", Manufacturer},
};

/// A flow is on while both its points are 1.
constexpr int flowPoints[][2] = {
    {4219, 4219}, // input to rectifier
    {4220, 4224}, // rectifier to battery
    {4221, 4224}, // battery to inverter
    {4220, 4221}, // rectifier to inverter
    {4222, 4223}, // inverter to load
    {4218, 4223}, // bypass to load
};

/// A line of an information panel; its caption is translated in the diagram's context.
struct PanelRow
{
    const char* caption;
    Text text;
};

constexpr PanelRow inputPanel[] = {
    {QT_TRANSLATE_NOOP("Energyline", "Voltage:"),   InputVoltage},
    {QT_TRANSLATE_NOOP("Energyline", "Current:"),   InputCurrent},
    {QT_TRANSLATE_NOOP("Energyline", "Frequency:"), InputFrequency},
};

constexpr PanelRow bypassPanel[] = {
    {QT_TRANSLATE_NOOP("Energyline", "Voltage:"),   BypassVoltage},
    {QT_TRANSLATE_NOOP("Energyline", "Current:"),   BypassCurrent},
    {QT_TRANSLATE_NOOP("Energyline", "Frequency:"), BypassFrequency},
    {QT_TRANSLATE_NOOP("Energyline", "Status:"),    BypassStatus},
};

constexpr PanelRow devicePanel[] = {
    {QT_TRANSLATE_NOOP("Energyline", "Working mode:"), SupplyMode},
    {QT_TRANSLATE_NOOP("Energyline", "Model:"),        PhaseConfiguration},
    {QT_TRANSLATE_NOOP("Energyline", "Type:"),         DeviceType},
    {QT_TRANSLATE_NOOP("Energyline", "Name:"),         DeviceName},
    {QT_TRANSLATE_NOOP("Energyline", "Manufacturer:"), Manufacturer},
};

constexpr PanelRow loadPanel[] = {
    {QT_TRANSLATE_NOOP("Energyline", "Voltage:"),         OutputVoltage},
    {QT_TRANSLATE_NOOP("Energyline", "Current:"),         OutputCurrent},
    {QT_TRANSLATE_NOOP("Energyline", "Frequency:"),       OutputFrequency},
    {QT_TRANSLATE_NOOP("Energyline", "Apparent power:"),  ApparentPower},
    {QT_TRANSLATE_NOOP("Energyline", "Active power:"),    ActivePower},
    {QT_TRANSLATE_NOOP("Energyline", "Reactive power:"),  ReactivePower},
    {QT_TRANSLATE_NOOP("Energyline", "Load percentage:"), LoadPercentage},
};

constexpr PanelRow batteryPanel[] = {
    {QT_TRANSLATE_NOOP("Energyline", "Voltage:"),            BatteryVoltage},
    {QT_TRANSLATE_NOOP("Energyline", "Current:"),            BatteryCurrent},
    {QT_TRANSLATE_NOOP("Energyline", "Temperature:"),        BatteryTemperature},
    {QT_TRANSLATE_NOOP("Energyline", "Remaining time:"),     RemainingTime},
    {QT_TRANSLATE_NOOP("Energyline", "Remaining capacity:"), RemainingCapacity},
};

constexpr PanelRow recInvPanel[] = {
    {QT_TRANSLATE_NOOP("Energyline", "REC status:"),      RectifierState},
    {QT_TRANSLATE_NOOP("Energyline", "REC temperature:"), RectifierTemperature},
    {QT_TRANSLATE_NOOP("Energyline", "INV status:"),      InverterState},
    {QT_TRANSLATE_NOOP("Energyline", "INV temperature:"), InverterTemperature},
};
// clang-format on

} // namespace flowtexts
