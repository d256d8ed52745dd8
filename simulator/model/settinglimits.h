#pragma once

#include <cstdint>

namespace simulation {

/// The only raw values that an option setting takes, where they are not simply a range.
struct Choices
{
    const std::uint16_t* values;
    int count;
};

/// What a single-register setting of a unit takes and what it holds when the unit comes from the works.
/// Texts and the system time are not here: their rules follow from how the register map reads them.
struct SettingLimit
{
    int point;
    int minRaw;
    int maxRaw;
    const Choices* choices;
    std::uint16_t initialRaw;
};

// clang-format off
constexpr std::uint16_t workModeValues[]      = {1, 2, 4, 6, 8};
constexpr std::uint16_t chargeCurrentValues[] = {50, 100, 200, 300, 400, 500, 600, 700, 800, 900, 1000, 1100, 1200};
constexpr std::uint16_t voltageValues[]       = {100, 110, 120, 125, 200, 208, 220, 230, 240};
constexpr std::uint16_t frequencyValues[]     = {50, 60};
constexpr Choices workModes      = {workModeValues, 5};
constexpr Choices chargeCurrents = {chargeCurrentValues, 13};
constexpr Choices voltages       = {voltageValues, 9};
constexpr Choices frequencies    = {frequencyValues, 2};

// Columns: point, smallest and largest raw value, choices, initial raw value; in point order. 0 to 65535
// stands for a setting without limits of its own.
constexpr SettingLimit settingLimits[] = {
    // System
    {3000,   1,     8, &workModes,         1},
    {3001,   0,    10, nullptr,            1},
    {3002,   0,    10, nullptr,            1},
    {3003,   0, 65535, nullptr,            0},
    {3004,   5,    50, nullptr,           20},
    {3005,   0,     3, nullptr,            0},
    {3006,   0,     4, nullptr,            0},
    {3007,   0,     3, nullptr,            0},
    {3008,   0,     7, nullptr,            4},
    {3010,   0,     1, nullptr,            1},
    {3011,   0,     1, nullptr,            1},
    {3012,   0,     1, nullptr,            1},
    {3013,   0,     1, nullptr,            0},
    {3014,   0,     1, nullptr,            0},
    {3015,   0,     1, nullptr,            0},
    {3016,   0, 65535, nullptr,          100},
    // Battery
    {3017,  16,   180, nullptr,           40},
    {3018,   1, 30000, nullptr,           40},
    {3019, 210,   365, nullptr,          225},
    {3020, 210,   365, nullptr,          235},
    {3021, 160,   300, nullptr,          165},
    {3022, 160,   300, nullptr,          175},
    {3023,  50,  1200, &chargeCurrents, 1000},
    {3024,   0,     1, nullptr,            0},
    {3025,   1,    48, nullptr,           12},
    {3026,   1,  3000, nullptr,         1440},
    {3027, 720, 30000, nullptr,         2160},
    {3028,   1,    30, nullptr,            5},
    {3029,   0,  3000, nullptr,           90},
    {3030, 105,   125, nullptr,          110},
    // Dry contacts
    {3031,   0,     8, nullptr,            1},
    {3032,   0,     8, nullptr,            2},
    {3033,   0,     8, nullptr,            5},
    {3034,   0,     9, nullptr,            0},
    {3035,   0,     8, nullptr,            4},
    {3036,   0,     8, nullptr,            6},
    // Ratings
    {3037,   0, 65535, nullptr,           30},
    {3038,   0, 65535, nullptr,           30},
    {3039, 100,   240, &voltages,        230},
    {3040,  50,    60, &frequencies,      50},
    {3041, 100,   240, &voltages,        230},
    {3042,  50,    60, &frequencies,      50},
    // Switches
    {3043,   0,     1, nullptr,            0},
    {3044,   0,     1, nullptr,            0},
    {3045,   0,     1, nullptr,            1},
    {3046,   0,     1, nullptr,            0},
    {3047,   0,     1, nullptr,            1},
    {3048,   0,     1, nullptr,            1},
    {3049,   0,     1, nullptr,            1},
    {3050,   0,     1, nullptr,            0},
    {3051,   0,     1, nullptr,            0},
    {3052,   0,     1, nullptr,            0},
    {3053,   0,     1, nullptr,            1},
    {3054,   0,     1, nullptr,            0},
    // Calibration
    {3055,   0, 65535, nullptr,            3},
    {3056,   0, 65535, nullptr,            0},
    {3057,   0, 65535, nullptr,        65531},
    {3058,   0, 65535, nullptr,            2},
    {3059,   0, 65535, nullptr,            0},
    {3060,   0, 65535, nullptr,            4},
    {3061,   0, 65535, nullptr,            1},
    {3062,   0, 65535, nullptr,        65534},
    {3063,   0, 65535, nullptr,            0},
    {3064,   0, 65535, nullptr,            6},
    {3065,   0, 65535, nullptr,        65533},
    {3066,   0, 65535, nullptr,            0},
    {3067,   0, 65535, nullptr,            5},
    {3068,   0, 65535, nullptr,        65532},
    {3069,   0, 65535, nullptr,            0},
    {3070,   0, 65535, nullptr,            0},
    {3071,   0, 65535, nullptr,            0},
    {3072,   0, 65535, nullptr,            0},
    {3073,   5,    50, nullptr,           10},
    // Communication
    {3074,   1,   255, nullptr,            1},
    {3075,   1,     2, nullptr,            1},
    {3076,   1,     2, nullptr,            1},
    {3125,   0,     4, nullptr,            3},
    {3126,   0,     4, nullptr,            3},
};
// clang-format on

} // namespace simulation
