#pragma once

// Source texts of the data log; translated in the context of vek5Font.
namespace logheadings {

// clang-format off
// Only 15 of these are handed out. The others stay all the same: they fix the indices.
constexpr const char* all[] = {
    "Battery state",                   // 0
    "Time on battery(s)",              // 1
    "Remaining battery time(Min)",     // 2
    "Remaining battery capacity(%)",   // 3
    "Battery voltage(V)",              // 4
    "Battery current(A)",              // 5
    "Battery temperature(C)",          // 6
    "Number of mains failure",         // 7
    "Input voltage(V)",                // 8
    "Input current(A)",                // 9
    "Input frequency(Hz)",             // 10
    "Input power(W)",                  // 11
    "Output mode",                     // 12
    "Output frequency(Hz)",            // 13
    "Output voltage(V)",               // 14
    "Output current(A)",               // 15
    "Output power(W)",                 // 16
    "Output load(%)",                  // 17
    "Bypass frequency(Hz)",            // 18
    "Bypass voltage(V)",               // 19
    "Bypass current(A)",               // 20
    "Bypass power(W)",                 // 21
    "Input voltage R/S/T(V)",          // 22
    "Input current R/S/T(A)",          // 23
    "Input frequency R/S/T(Hz)",       // 24
    "Input power R/S/T(W)",            // 25
    "Output voltage R/S/T(V)",         // 26
    "Output current R/S/T(A)",         // 27
    "Output power R/S/T(W)",           // 28
    "Output load R/S/T(%)",            // 29
    "Bypass voltage R/S/T(V)",         // 30
    "Bypass current R/S/T(A)",         // 31
    "Bypass power R/S/T(W)",           // 32
};

// The headings handed out, as indices into the list above. This order is the one in which a row of values
// is filled; it is not the order of the list.
constexpr int handedOut[] = {8, 10, 19, 18, 14, 15, 16, 17, 13, 12, 3, 4, 5, 6, 0};

// Indexed by the code of point 4101. The pages have a sixth state, the log does not: both as they stand.
constexpr const char* batteryStates[] = {"Disconnect", "Standby", "Equalized charge", "Float charge", "Discharge"};

// Indexed by the code of point 4161.
constexpr const char* outputModes[] = {"None", "Load on bypass", "Load on inverter", "Load on other"};
// clang-format on

} // namespace logheadings
