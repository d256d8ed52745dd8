#pragma once

#include <QtGlobal>

namespace controlcommands {

/// One command that is sent as a code and an argument.
struct Row
{
    int id;
    const char* name; ///< source text in the context vek5Client
    int driverCode;
};

// Command id, name, driver code. "Selftest" and "Discharge" share a code, and so do "Wakeup UPS" and
// "Startup UPS": deliberate, drivers tell them apart by the argument.
// clang-format off
constexpr Row rows[] = {
    {1001, QT_TRANSLATE_NOOP("vek5Client", "Clean fault"),            12},
    {1002, QT_TRANSLATE_NOOP("vek5Client", "Clean history"),          13},
    {1003, QT_TRANSLATE_NOOP("vek5Client", "Selftest"),                0},
    {1004, QT_TRANSLATE_NOOP("vek5Client", "Discharge"),               0},
    {1005, QT_TRANSLATE_NOOP("vek5Client", "Discharge to low"),        2},
    {1006, QT_TRANSLATE_NOOP("vek5Client", "Cancel task"),             3},
    {1007, QT_TRANSLATE_NOOP("vek5Client", "Shutdown UPS"),            4},
    {1008, QT_TRANSLATE_NOOP("vek5Client", "Startup UPS"),             7},
    {1009, QT_TRANSLATE_NOOP("vek5Client", "Buzzer on"),              17},
    {1010, QT_TRANSLATE_NOOP("vek5Client", "Buzzer off"),             18},
    {1013, QT_TRANSLATE_NOOP("vek5Client", "Wakeup UPS"),              7},
    {1015, QT_TRANSLATE_NOOP("vek5Client", "Shutdown to bypass"),      9},
    {1016, QT_TRANSLATE_NOOP("vek5Client", "Turn bypass manually"),   10},
    {1017, QT_TRANSLATE_NOOP("vek5Client", "Turn inverter manually"), 11},
    {1045, QT_TRANSLATE_NOOP("vek5Client", "Download history"),       20},
};
// clang-format on

} // namespace controlcommands
