#pragma once

#include <cstdint>

// What the registers of a unit mean, without any transport: shared by the driver and the simulated unit so
// that both serve the same map, and by nothing of the plugin.
namespace unitmap {

/// How a register is turned into a point's value.
enum class Kind
{
    Unsigned,   ///< value = raw / divisor
    Signed,     ///< value = raw as two's complement / divisor
    WholeUnits, ///< value = raw / divisor without its fraction, so that the value names an option
    Text,       ///< one byte of a text in each register, the rest of the row 0
    Date,       ///< year within the century, month, day, hour, minute, second
    Reserved    ///< without meaning yet: value = raw, never written
};

/// One run of consecutive points in consecutive registers.
struct Row
{
    int firstPoint;
    int pointCount;
    int firstRegister;
    int divisor;
    Kind kind;
    const char* meaning;
};

/// Modbus function codes that the units answer.
enum Function : std::uint8_t
{
    ReadDiscreteInputs = 2,
    ReadHoldingRegisters = 3,
    ReadInputRegisters = 4,
    WriteSingleRegister = 6,
    WriteMultipleRegisters = 16
};

/// One request of a full read. The blocks of one function have pairwise different counts, so that a late
/// reply to one is never taken for the reply to another.
struct Block
{
    Function function;
    int firstRegister;
    int count;
    int firstPoint; ///< point in the first register; the others follow in order
};

constexpr int alarmPointCount = 512;
constexpr int inputRegisterCount = 276;
constexpr int holdingRegisterCount = 164;

// clang-format off
constexpr Block blocks[] = {
    {ReadDiscreteInputs,     0, 512, 2000}, // alarm states, all in one request
    {ReadInputRegisters,     0, 101, 4000}, // identity
    {ReadInputRegisters,   101, 124, 4101}, // live values, in one request so that they belong together
    {ReadInputRegisters,   225,  51, 4225}, // states and ratings
    {ReadHoldingRegisters,   0,  87, 3000}, // settings up to the device type
    {ReadHoldingRegisters,  87,  77, 3087}, // company name to phone
};
// clang-format on

/// A command is the write of one holding register, this one plus its code, with the argument as value. So a
/// reply, which repeats both, is never taken for that of another command.
constexpr int firstCommandRegister = 0x1000;
constexpr int commandRegisterCount = 32;
/// Value for a command that has no argument.
constexpr std::uint16_t noArgument = 0xFFFF;

/// The row that holds a point, or null for a point outside the map. 3000-3163, 4000-4275, 2000-2511.
const Row* rowOfPoint(int pointId);

/// The value that a raw register of this row stands for.
float valueOf(const Row& row, std::uint16_t raw);

/// The raw register for a value of this row, rounded to the nearest and held within what a register can
/// carry.
std::uint16_t rawOf(const Row& row, double value);

} // namespace unitmap
