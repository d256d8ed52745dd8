#include "trendrows.h"

#include <algorithm>
#include <iterator>

int trendrows::curveCount(const Row& row)
{
    const auto* end = std::find(std::begin(row.curves), std::end(row.curves), nullptr);
    return static_cast<int>(end - std::begin(row.curves));
}

trendrows::Range trendrows::axisRange(const Row& row, double low, double high)
{
    if (row.highest > row.lowest)
        return {qMin(low, row.lowest), qMax(high, row.highest)};
    const double missing = qMax(0.0, row.leastSpan - (high - low)) / 2;
    return {low - missing, high + missing};
}
