#pragma once

namespace simulation {

/// A scenario that comes with the program.
struct BuiltinScenario
{
    const char* name;
    const char* text;
};

constexpr BuiltinScenario builtinScenarios[] = {
    {"mains", R"(# A mains failure of seven seconds every half minute.
 8 mains off
15 mains on
30 repeat
)"},
    {"demo", R"(# Two minutes that show every mode of a unit.
  8 mains off                  # the battery takes over
 15 mains on
 20 load 116                   # too much for the rectifier alone: the battery helps it ...
 24 load 160                   # ... and for the inverter: over to the bypass
 28 load normal                # and back, five seconds later
 35 command 10                 # transfer to bypass by hand
 38 command 11                 # and back to the inverter
 40 battery charge 40
 40 mains off
 43 battery charge 10          # low battery
 46 battery charge 1           # end of discharge: no output
 51 mains on                   # restarts by itself
 58 battery charge 97
 60 command 0                  # self-test ...
 70 command 3                  # ... cut short
 72 setting 3000 4             # economy mode: the bypass supplies, the inverter stands by
 75 setting 3000 1
 76 command 9                  # shut down to bypass
 79 command 7                  # start up
 84 mains voltage 180          # too low for rectifier and bypass
 87 mains on
 90 bypass bad
 92 bypass good
 92 command 0 10               # discharge for ten minutes ...
 95 command 3                  # ... cancelled
 95 temperature inverter 85
 97 temperature inverter normal
 97 battery charge 60
 98 command 2                  # discharge to low
100 battery charge 10          # it ends by itself
101 battery charge 100
102 command 4                  # output off
105 command 7                  # start up
109 epo on                     # emergency power off
111 epo off
111 command 12                 # clear faults
111 command 7                  # start up
116 battery off
118 battery on
120 repeat
)"},
    {"none", ""},
};

/// Units on one line begin a built-in scenario one after the other, so that their events can be told apart:
/// so much later for each further address, four times at most.
constexpr int builtinStaggerMs = 3000;

} // namespace simulation
