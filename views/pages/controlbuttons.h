#pragma once

#include <QtGlobal>

// The buttons that send a command. Hosts style them and translators know them by these names and texts.
namespace controlbuttons {

/// Captions of the groups, in the order in which the pages show them.
enum Group
{
    buzzer,
    startup,
    manualSwitch,
    battery,
    clear,
    plugin
};

struct Button
{
    Group group;
    const char* objectName;
    const char* text;
    int commandId;
    const char* toolTip;
};

constexpr int downloadCommand = 1045;

// clang-format off
constexpr const char* captions[] = {
    QT_TRANSLATE_NOOP("vek5View", "Buzzer:"),
    QT_TRANSLATE_NOOP("vek5View", "Startup&Shutdown:"),
    QT_TRANSLATE_NOOP("vek5View", "Manual switch:"),
    QT_TRANSLATE_NOOP("vek5View", "Battery:"),
    QT_TRANSLATE_NOOP("vek5View", "Clear"),
    QT_TRANSLATE_NOOP("vek5View", "Plugin"),
};

constexpr Button buttons[] = {
    {buzzer,       "buzzer_off",           QT_TRANSLATE_NOOP("vek5View", "Turn off"),              1010,
     QT_TRANSLATE_NOOP("vek5View", "Silence the unit's buzzer")},
    {buzzer,       "buzzer_on",            QT_TRANSLATE_NOOP("vek5View", "Turn on"),               1009,
     QT_TRANSLATE_NOOP("vek5View", "Let the unit's buzzer sound again")},
    {startup,      "power_on",             QT_TRANSLATE_NOOP("vek5View", "Startup"),               1008,
     QT_TRANSLATE_NOOP("vek5View", "Start the inverter and supply the load from it")},
    {startup,      "off_turn_bypass",      QT_TRANSLATE_NOOP("vek5View", "Shutdown to bypass"),    1015,
     QT_TRANSLATE_NOOP("vek5View", "Stop the inverter; the bypass goes on supplying the load")},
    {startup,      "power_off",            QT_TRANSLATE_NOOP("vek5View", "Shutdown stop output"),  1007,
     QT_TRANSLATE_NOOP("vek5View", "Stop the unit: the load loses its supply")},
    {manualSwitch, "turn_bypass",          QT_TRANSLATE_NOOP("vek5View", "Transfer to bypass"),    1016,
     QT_TRANSLATE_NOOP("vek5View", "Supply the load from the bypass")},
    {manualSwitch, "turn_inverter",        QT_TRANSLATE_NOOP("vek5View", "Transfer to inverter"),  1017,
     QT_TRANSLATE_NOOP("vek5View", "Supply the load from the inverter")},
    {battery,      "battery_test",         QT_TRANSLATE_NOOP("vek5View", "Battery test 20s"),      1003,
     QT_TRANSLATE_NOOP("vek5View", "Discharge the battery for 20 seconds to test it")},
    {battery,      "battery_maintenance",  QT_TRANSLATE_NOOP("vek5View", "Battery maintenance"),   1005,
     QT_TRANSLATE_NOOP("vek5View", "Discharge the battery until it is low, then charge it again")},
    {battery,      "cancel_test",          QT_TRANSLATE_NOOP("vek5View", "Cancel test"),           1006,
     QT_TRANSLATE_NOOP("vek5View", "End a battery test or maintenance that runs")},
    {clear,        "clear_fault",          QT_TRANSLATE_NOOP("vek5View", "Clear fault"),           1001,
     QT_TRANSLATE_NOOP("vek5View", "Reset the faults that the unit has latched")},
    {clear,        "clear_history_log",    QT_TRANSLATE_NOOP("vek5View", "Clear history"),         1002,
     QT_TRANSLATE_NOOP("vek5View", "Delete the history that the unit keeps")},
    {plugin,       "download_history_log", QT_TRANSLATE_NOOP("vek5View", "Download history"),      downloadCommand,
     QT_TRANSLATE_NOOP("vek5View", "Save the history that the unit keeps to a CSV file")},
};
// clang-format on

} // namespace controlbuttons
