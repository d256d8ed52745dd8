#pragma once

namespace simulation {

/// Something that happened to a unit before the simulation began.
struct PastIncident
{
    int daysAgo;
    int hour;             ///< of the unit's own time, within which it began
    int lastsS;           ///< until the unit is itself again
    const char* scenario; ///< what happened
};

// The oldest first. Each ends with every alarm cleared, so that the next begins with a unit in order.
// clang-format off
constexpr PastIncident pastIncidents[] = {
    {44,  3,  60, "1 mains off\n42 mains on"},                                        // a failure by night
    {37, 10, 260, "1 command 10\n240 command 11"},                                    // maintenance on bypass
    {29, 22,  30, "1 bypass bad\n13 bypass good"},
    {23, 15,  60, "1 load 116\n31 load normal"},
    {16, 13, 320, "1 temperature inverter 85\n300 temperature inverter normal"},      // a blocked air filter
    {12, 18,  50, "1 mains voltage 180\n28 mains on"},                                // a brown-out
    { 8,  9,  40, "1 command 0"},                                                     // battery self-test
    { 4, 20, 120, "1 battery off\n100 battery on"},                                   // work on the battery
    { 2,  6,  30, "1 mains off\n4 mains on"},                                         // a short dip
};
// clang-format on

} // namespace simulation
