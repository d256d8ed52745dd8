#pragma once

#include <QtGlobal>

/// What a unit's pages may ask for, by the id of the request. Translated in the context of EventText.
namespace commandnames {

struct Name
{
    int id;
    const char* text;
};

// clang-format off
constexpr Name all[] = {
    {1001, QT_TRANSLATE_NOOP("EventText", "Clean fault")},
    {1002, QT_TRANSLATE_NOOP("EventText", "Clean history")},
    {1003, QT_TRANSLATE_NOOP("EventText", "Selftest")},
    {1004, QT_TRANSLATE_NOOP("EventText", "Discharge")},
    {1005, QT_TRANSLATE_NOOP("EventText", "Discharge to low")},
    {1006, QT_TRANSLATE_NOOP("EventText", "Cancel task")},
    {1007, QT_TRANSLATE_NOOP("EventText", "Shutdown UPS")},
    {1008, QT_TRANSLATE_NOOP("EventText", "Startup UPS")},
    {1009, QT_TRANSLATE_NOOP("EventText", "Buzzer on")},
    {1010, QT_TRANSLATE_NOOP("EventText", "Buzzer off")},
    {1013, QT_TRANSLATE_NOOP("EventText", "Wakeup UPS")},
    {1015, QT_TRANSLATE_NOOP("EventText", "Shutdown to bypass")},
    {1016, QT_TRANSLATE_NOOP("EventText", "Turn bypass manually")},
    {1017, QT_TRANSLATE_NOOP("EventText", "Turn inverter manually")},
    {1018, QT_TRANSLATE_NOOP("EventText", "Close serial port")},
    {1045, QT_TRANSLATE_NOOP("EventText", "Download history")},
};
// clang-format on

} // namespace commandnames
