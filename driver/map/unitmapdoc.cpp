// Prints docs/register-map.md from the compiled tables.

#include "commandrows.h"
#include "historymap.h"
#include "unitmap.h"
#include "unitrows.h"

#include <cstdio>
#include <string>

namespace {

using namespace unitmap;

constexpr const char* introduction =
    R"(# Register map

Written by `scripts/register-map.sh` from the tables in `driver/map`; edit those, not this file.

The driver library `libvek5m_10-30k` and the simulated units share this map. The protocol is Modbus RTU on a
serial line and Modbus TCP on a network; registers are numbered from 0 as they stand in a request.

How to read the tables: a row is one run of points in as many consecutive registers. The value of a point
follows from its 16-bit register by the kind:

| Kind | Value |
|---|---|
| unsigned | register / divisor |
| signed | register as two's complement / divisor |
| whole | register / divisor, its fraction dropped, so that the value names an option |
| text | one byte of a text in each register, 0 after its end |
| date | year within the century, month, day, hour, minute, second |
| reserved | the register, 0 on present units |
)";

constexpr const char* settingsNote =
    R"(
A number is written with function 6, as the raw register. A text or the system time is written whole, with
function 16. Reserved registers are not written.
)";

const char* nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Unsigned:
        return "unsigned";
    case Kind::Signed:
        return "signed";
    case Kind::WholeUnits:
        return "whole";
    case Kind::Text:
        return "text";
    case Kind::Date:
        return "date";
    case Kind::Reserved:
        break;
    }
    return "reserved";
}

std::string runOf(int first, int count)
{
    const std::string begin = std::to_string(first);
    return count == 1 ? begin : begin + "-" + std::to_string(first + count - 1);
}

template <std::size_t size>
void printRows(const char* title, const Row (&rows)[size])
{
    std::printf("\n## %s\n\n| Points | Registers | Count | Divisor | Kind | Meaning |\n", title);
    std::printf("|---|---|---|---|---|---|\n");
    for (const Row& row : rows) {
        std::printf("| %s | %s | %d | %d | %s | %s |\n", runOf(row.firstPoint, row.pointCount).c_str(),
                    runOf(row.firstRegister, row.pointCount).c_str(), row.pointCount, row.divisor,
                    nameOf(row.kind), row.meaning);
    }
}

void printBlocks()
{
    std::printf(
        "\n## Blocks of a full read\n\nOne request each, in this order. Blocks of one function differ in "
        "length, so that a late reply is never\ntaken for that of another block.\n\n"
        "| Function | Registers | Count | Points |\n|---|---|---|---|\n");
    for (const Block& block : blocks) {
        std::printf("| %d | %s | %d | %s |\n", block.function,
                    runOf(block.firstRegister, block.count).c_str(), block.count,
                    runOf(block.firstPoint, block.count).c_str());
    }
}

void printCommands()
{
    std::printf("\n## Commands\n\nOne write of a holding register with function 6: of register %d (0x%04X) "
                "plus the code. "
                "The value is the\nargument, %d (0x%04X) for none. These registers cannot be read.\n\n"
                "| Code | Argument | Meaning |\n|---|---|---|\n",
                firstCommandRegister, firstCommandRegister, noArgument, noArgument);
    for (const CommandRow& row : commandRows) {
        std::printf("| %d | %s | %s |\n", static_cast<int>(row.code),
                    row.argument == Argument::Number ? "number" : "none", row.meaning);
    }
}

void printHistory()
{
    constexpr const char* fields[historyRecordLength] = {"index of the alarm, 0-511",
                                                         "1: appeared, 0: cleared",
                                                         "year within the century",
                                                         "month",
                                                         "day",
                                                         "hour",
                                                         "minute",
                                                         "second"};
    std::printf("\n## History (function 4)\n\nThe last %d alarms that appeared or cleared, by the unit's own "
                "clock, the "
                "oldest first. Read the header before\nand after the records: as long as its second register "
                "is the same, "
                "every record has kept its place.\nNeighbouring requests read different numbers of records, "
                "so that a "
                "reply is never taken for that of another.\n\n",
                historyCapacity);
    std::printf("| Registers | Meaning |\n|---|---|\n");
    std::printf("| %d (0x%04X) | number of records |\n", historyHeaderRegister, historyHeaderRegister);
    std::printf("| %d (0x%04X) | counter of the records lost so far, replaced by newer ones or cleared |\n",
                historyHeaderRegister + 1, historyHeaderRegister + 1);
    std::printf("| %s (0x%04X) | records of %d registers each, 0 where there is none |\n",
                runOf(historyRegister, historyCapacity * historyRecordLength).c_str(), historyRegister,
                historyRecordLength);
    std::printf("\n| Register of a record | Meaning |\n|---|---|\n");
    for (int i = 0; i < historyRecordLength; ++i)
        std::printf("| %d | %s |\n", i, fields[i]);
}

} // namespace

int main()
{
    std::fputs(introduction, stdout);
    printRows("Discrete inputs (function 2)", discreteInputRows);
    printRows("Input registers (function 4)", inputRegisterRows);
    printRows("Holding registers (functions 3, 6 and 16)", holdingRegisterRows);
    std::fputs(settingsNote, stdout);
    printBlocks();
    printCommands();
    printHistory();
    return std::ferror(stdout) || std::fflush(stdout) ? 1 : 0;
}
