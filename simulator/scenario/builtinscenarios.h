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
 20 load 116                   # a warning at first ...
 22 load 160                   # ... then too much: over to the bypass
 26 load normal                # and back, five seconds later
 33 command 10                 # transfer to bypass by hand
 36 command 11                 # and back to the inverter
 39 battery charge 40
 39 mains off
 42 battery charge 10          # low battery
 46 battery charge 1           # end of discharge: no output
 51 mains on                   # restarts by itself
 58 battery charge 97
 60 command 0                  # self-test of 20 s
 82 command 9                  # shut down to bypass
 86 command 7                  # start up
 91 mains voltage 180          # too low for rectifier and bypass
 94 mains on
 96 bypass bad
 98 bypass good
 99 command 0 10               # discharge for ten minutes ...
102 command 3                  # ... cancelled
102 temperature inverter 85
104 temperature inverter normal
104 battery charge 60
104 command 2                  # discharge to low
106 battery charge 10          # it ends by itself
107 battery charge 100
108 command 4                  # output off
110 command 7                  # start up
113 epo on                     # emergency power off
114 epo off
114 command 12                 # clear faults
114 command 7                  # start up
118 battery off
119 battery on
120 repeat
)"},
    {"none", ""},
};

/// Units on one line begin a built-in scenario one after the other, so that their events can be told apart:
/// so much later for each further address, four times at most.
constexpr int builtinStaggerMs = 3000;

} // namespace simulation
