#pragma once

namespace unitmap {

/// What the text behind a command's code is for.
enum class Argument
{
    Number,  ///< sent to the unit, or noArgument when the text is empty
    FileName ///< a file of the caller's: the unit gets noArgument
};

/// One command that the units carry out.
struct CommandRow
{
    int code;
    Argument argument;
    const char* meaning;
};

// Code, what its argument is, meaning; in code order.
// clang-format off
constexpr CommandRow commandRows[] = {
    { 0, Argument::Number,   "Battery test: of 20 s without an argument, else a discharge of so many minutes"},
    { 2, Argument::Number,   "Discharge the battery until it is low"},
    { 3, Argument::Number,   "Cancel the battery test"},
    { 4, Argument::Number,   "Shut down, no output"},
    { 7, Argument::Number,   "Start up"},
    { 9, Argument::Number,   "Shut down to bypass"},
    {10, Argument::Number,   "Transfer to bypass"},
    {11, Argument::Number,   "Transfer to inverter"},
    {12, Argument::Number,   "Clear faults"},
    {13, Argument::Number,   "Clear the history"},
    {17, Argument::Number,   "Buzzer on"},
    {18, Argument::Number,   "Buzzer off"},
    {20, Argument::FileName, "Download the history"},
};
// clang-format on

} // namespace unitmap
