#pragma once

namespace unitmap {

/// What the units can be told to do; the numbers are the codes on the wire.
enum class Command
{
    BatteryTest = 0,
    DischargeToLow = 2,
    CancelTest = 3,
    ShutDown = 4,
    StartUp = 7,
    ShutDownToBypass = 9,
    ToBypass = 10,
    ToInverter = 11,
    ClearFaults = 12,
    ClearHistory = 13,
    BuzzerOn = 17,
    BuzzerOff = 18,
    DownloadHistory = 20
};

/// What the text behind a command's code is for.
enum class Argument
{
    Number,  ///< sent to the unit, or noArgument when the text is empty
    FileName ///< a file of the caller's: the unit gets noArgument
};

/// One command that the units carry out.
struct CommandRow
{
    Command code;
    Argument argument;
    const char* meaning;
};

// Code, what its argument is, meaning; in code order.
// clang-format off
constexpr CommandRow commandRows[] = {
    {Command::BatteryTest,      Argument::Number,   "Battery test: of 20 s without an argument, else a discharge of so many minutes"},
    {Command::DischargeToLow,   Argument::Number,   "Discharge the battery until it is low"},
    {Command::CancelTest,       Argument::Number,   "Cancel the battery test"},
    {Command::ShutDown,         Argument::Number,   "Shut down, no output"},
    {Command::StartUp,          Argument::Number,   "Start up"},
    {Command::ShutDownToBypass, Argument::Number,   "Shut down to bypass"},
    {Command::ToBypass,         Argument::Number,   "Transfer to bypass"},
    {Command::ToInverter,       Argument::Number,   "Transfer to inverter"},
    {Command::ClearFaults,      Argument::Number,   "Clear faults"},
    {Command::ClearHistory,     Argument::Number,   "Clear the history"},
    {Command::BuzzerOn,         Argument::Number,   "Buzzer on"},
    {Command::BuzzerOff,        Argument::Number,   "Buzzer off"},
    {Command::DownloadHistory,  Argument::FileName, "Download the history: the registers below are about to be read"},
};
// clang-format on

/// The row of a command's code, or null when no command has it.
constexpr const CommandRow* rowOfCommand(int code)
{
    for (const CommandRow& row : commandRows)
        if (static_cast<int>(row.code) == code)
            return &row;
    return nullptr;
}

} // namespace unitmap
