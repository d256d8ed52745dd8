#include "unitmap.h"

#include "unitrows.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace unitmap {

namespace {

template <std::size_t size>
constexpr bool isGapless(const Row (&rows)[size], int firstPoint, int pointCount)
{
    int point = firstPoint;
    for (const Row& row : rows) {
        if (row.firstPoint != point || row.firstRegister != point - firstPoint || row.divisor < 1)
            return false;
        point += row.pointCount;
    }
    return point == firstPoint + pointCount;
}

static_assert(isGapless(discreteInputRows, 2000, alarmPointCount), "alarm rows leave a gap");
static_assert(isGapless(inputRegisterRows, 4000, inputRegisterCount), "input rows leave a gap");
static_assert(isGapless(holdingRegisterRows, 3000, holdingRegisterCount), "holding rows leave a gap");

/// The blocks of one function read its registers from the first to the last, each once.
constexpr bool isReadWhole(Function function, int firstPoint, int registerCount, int maxBlock)
{
    int nextRegister = 0;
    for (const Block& block : blocks) {
        if (block.function != function)
            continue;
        if (block.firstRegister != nextRegister || block.firstPoint != firstPoint + nextRegister ||
            block.count < 1 || block.count > maxBlock)
            return false;
        nextRegister += block.count;
    }
    return nextRegister == registerCount;
}

constexpr bool haveOwnLengths()
{
    for (const Block& a : blocks)
        for (const Block& b : blocks)
            if (&a != &b && a.function == b.function && a.count == b.count)
                return false;
    return true;
}

// 2000 inputs and 125 registers are the most that one reply can carry.
static_assert(isReadWhole(ReadDiscreteInputs, 2000, alarmPointCount, 2000), "alarms are not read whole");
static_assert(isReadWhole(ReadInputRegisters, 4000, inputRegisterCount, 125), "inputs are not read whole");
static_assert(isReadWhole(ReadHoldingRegisters, 3000, holdingRegisterCount, 125),
              "settings are not read whole");
static_assert(haveOwnLengths(), "a late reply could be taken for that of another block");

template <std::size_t size>
const Row* findRow(const Row (&rows)[size], int pointId)
{
    const Row* after = std::upper_bound(std::begin(rows), std::end(rows), pointId,
                                        [](int point, const Row& row) { return point < row.firstPoint; });
    if (after == std::begin(rows))
        return nullptr;
    const Row* row = after - 1;
    return pointId < row->firstPoint + row->pointCount ? row : nullptr;
}

} // namespace

const Row* rowOfPoint(int pointId)
{
    if (pointId < 3000)
        return findRow(discreteInputRows, pointId);
    if (pointId < 4000)
        return findRow(holdingRegisterRows, pointId);
    return findRow(inputRegisterRows, pointId);
}

float valueOf(const Row& row, std::uint16_t raw)
{
    switch (row.kind) {
    case Kind::Signed:
        return static_cast<float>(static_cast<std::int16_t>(raw)) / static_cast<float>(row.divisor);
    case Kind::WholeUnits: {
        const int wholeUnits = raw / row.divisor;
        return static_cast<float>(wholeUnits);
    }
    case Kind::Unsigned:
    case Kind::Text:
    case Kind::Date:
    case Kind::Reserved:
        break;
    }
    return static_cast<float>(raw) / static_cast<float>(row.divisor);
}

std::uint16_t rawOf(const Row& row, double value)
{
    const double scaled = std::round(value * row.divisor);
    if (row.kind == Kind::Signed)
        return static_cast<std::uint16_t>(static_cast<std::int16_t>(std::clamp(scaled, -32768.0, 32767.0)));
    return static_cast<std::uint16_t>(std::clamp(scaled, 0.0, 65535.0));
}

} // namespace unitmap
