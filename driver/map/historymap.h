#pragma once

#include "unitmap.h"

// Where a unit keeps its history: input registers (function 4) behind the live values.
namespace unitmap {

/// The header is two registers: how many records there are, and a counter of the records lost so far,
/// because newer ones needed the room or because the history was cleared. It wraps at 65536. As long as it
/// stays the same, a record keeps its place.
constexpr int historyHeaderRegister = 0x2000;
constexpr int historyHeaderCount = 2;

/// Record i, the oldest being 0, begins at historyRegister + i * historyRecordLength. Places without a
/// record read as 0.
constexpr int historyRegister = 0x2008;
constexpr int historyCapacity = 1000;

/// The registers of one record, in order.
enum HistoryField
{
    HistoryCode,  ///< index of the alarm, 0-511
    HistoryState, ///< 1: appeared, 0: cleared
    HistoryYear,  ///< within the century; then the unit's own time down to the second
    HistoryMonth,
    HistoryDay,
    HistoryHour,
    HistoryMinute,
    HistorySecond,
    historyRecordLength
};

/// The most records that one reply can carry: 125 registers, whole records only.
constexpr int maxHistoryPage = 125 / historyRecordLength;

constexpr int historyRegisterCount =
    historyRegister - historyHeaderRegister + historyCapacity * historyRecordLength;

/// How many records to read next, `left` (at least 1) being still unread: as many as fit, but never as many
/// as the `previous` request read (0 for none), so that a duplicate of its reply is told apart by its length.
constexpr int nextHistoryPage(int left, int previous)
{
    const int most = left < maxHistoryPage ? left : maxHistoryPage;
    return most == previous ? most - 1 : most;
}

constexpr bool pagesCoverEveryCount()
{
    for (int count = 1; count <= historyCapacity; ++count) {
        for (int left = count, page = 0; left > 0; left -= page) {
            page = nextHistoryPage(left, page);
            if (page < 1)
                return false;
        }
    }
    return true;
}

constexpr bool haveNoLengthOfABlock()
{
    for (const Block& block : blocks)
        if (block.function == ReadInputRegisters &&
            (block.count == historyHeaderCount || block.count % historyRecordLength == 0))
            return false;
    return historyHeaderCount % historyRecordLength != 0;
}

static_assert(pagesCoverEveryCount(), "a history cannot be read to its end");
static_assert(haveNoLengthOfABlock(), "a late reply could be taken for a page of history");
static_assert(historyHeaderRegister >= inputRegisterCount &&
                  historyRegister >= historyHeaderRegister + historyHeaderCount &&
                  historyHeaderRegister + historyRegisterCount <= 65536,
              "the history overlaps something");

} // namespace unitmap
