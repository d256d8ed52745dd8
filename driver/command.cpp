#include "command.h"

#include "commandrows.h"
#include "modbushelpers.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

namespace driver {

namespace {

constexpr int firstSettingPoint = 3000;
constexpr int endOfSettingPoints = firstSettingPoint + unitmap::holdingRegisterCount;

/// The number that a text is, leading blanks apart; nothing when there is anything else in it.
std::optional<int> wholeNumber(char* text)
{
    const char* begin = FiltSpace(text);
    const char* end = begin + std::strlen(begin);
    int number = 0;
    const auto [stop, error] = std::from_chars(begin, end, number);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return number;
}

std::optional<int> numberWithin(char* text, int min, int max)
{
    const std::optional<int> number = wholeNumber(text);
    return number && *number >= min && *number <= max ? number : std::nullopt;
}

/// Ends the text at its first comma and returns what follows; null when there is none.
char* cutAtComma(char* text)
{
    char* comma = std::strchr(text, ',');
    if (!comma)
        return nullptr;
    *comma = '\0';
    return comma + 1;
}

int daysInMonth(int yearInCentury, int month)
{
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    // 2000 was a leap year, so every fourth of its century is.
    return month == 2 && yearInCentury % 4 == 0 ? 29 : days[month - 1];
}

bool parseDate(char* text, RegisterWrite& write)
{
    struct Range
    {
        int min, max;
    };
    constexpr Range ranges[] = {{0, 99}, {1, 12}, {1, 31}, {0, 23}, {0, 59}, {0, 59}};
    std::size_t field = 0;
    for (const Range& range : ranges) {
        if (!text)
            return false;
        char* rest = cutAtComma(text);
        const std::optional<int> number = numberWithin(text, range.min, range.max);
        if (!number)
            return false;
        write.values[field++] = static_cast<std::uint16_t>(*number);
        text = rest;
    }
    return !text && write.values[2] <= daysInMonth(write.values[0], write.values[1]);
}

bool parseText(const char* text, RegisterWrite& write)
{
    const std::size_t length = std::strlen(text);
    if (length > static_cast<std::size_t>(write.count))
        return false;
    std::transform(text, text + length, write.values.begin(),
                   [](char c) { return static_cast<std::uint16_t>(static_cast<unsigned char>(c)); });
    return true;
}

bool parseRaw(char* text, bool isSigned, RegisterWrite& write)
{
    const std::optional<int> raw =
        isSigned ? numberWithin(text, -32768, 32767) : numberWithin(text, 0, 65535);
    write.values[0] = static_cast<std::uint16_t>(raw.value_or(0));
    return raw.has_value();
}

std::optional<RegisterWrite> parseSetting(int point, char* value)
{
    const unitmap::Row* row = point < endOfSettingPoints ? unitmap::rowOfPoint(point) : nullptr;
    if (!row)
        return std::nullopt;
    const int offset = point - row->firstPoint;
    RegisterWrite single{unitmap::WriteSingleRegister, row->firstRegister + offset, 1, {}};
    RegisterWrite whole{unitmap::WriteMultipleRegisters, row->firstRegister, row->pointCount, {}};
    switch (row->kind) {
    case unitmap::Kind::Unsigned:
    case unitmap::Kind::WholeUnits:
    case unitmap::Kind::Signed:
        return parseRaw(value, row->kind == unitmap::Kind::Signed, single) ? std::optional(single)
                                                                           : std::nullopt;
    case unitmap::Kind::Text:
        return offset == 0 && parseText(value, whole) ? std::optional(whole) : std::nullopt;
    case unitmap::Kind::Date:
        return offset == 0 && parseDate(value, whole) ? std::optional(whole) : std::nullopt;
    case unitmap::Kind::Reserved:
        break;
    }
    return std::nullopt;
}

std::optional<RegisterWrite> parseUnitCommand(int code, char* argument)
{
    const unitmap::CommandRow* row = unitmap::rowOfCommand(code);
    if (!row)
        return std::nullopt;
    RegisterWrite write{
        unitmap::WriteSingleRegister, unitmap::firstCommandRegister + code, 1, {unitmap::noArgument}};
    if (row->argument == unitmap::Argument::FileName || *argument == '\0')
        return write;
    const std::optional<int> number = numberWithin(argument, 0, unitmap::noArgument - 1);
    if (!number)
        return std::nullopt;
    write.values[0] = static_cast<std::uint16_t>(*number);
    return write;
}

} // namespace

std::optional<RegisterWrite> parseCommand(const char* command)
{
    const std::string_view given = command ? command : "";
    if (given.size() > maxCommandLength)
        return std::nullopt;
    char text[maxCommandLength + 1] = {};
    given.copy(text, given.size());
    char* argument = cutAtComma(text);
    const std::optional<int> number = wholeNumber(text);
    if (!argument || !number)
        return std::nullopt;
    return *number >= firstSettingPoint ? parseSetting(*number, argument)
                                        : parseUnitCommand(*number, argument);
}

bool isHistoryDownload(const RegisterWrite& write)
{
    return write.firstRegister ==
           unitmap::firstCommandRegister + static_cast<int>(unitmap::Command::DownloadHistory);
}

} // namespace driver
