#pragma once

#include "historymap.h"
#include "transaction.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

namespace driver {

/// One event as the unit keeps it; the fields are those of unitmap::HistoryField.
using HistoryRecord = std::array<std::uint16_t, unitmap::historyRecordLength>;

/// How a fetch ended.
enum class FetchResult
{
    Complete,
    LineFailed, ///< lineError says how
    BadHistory, ///< what the unit says of its history cannot be
    Unsteady    ///< the unit lost records during each attempt
};

struct History
{
    FetchResult result = FetchResult::LineFailed;
    ReplyError lineError = ReplyError::None;
    std::vector<HistoryRecord> records; ///< the oldest first; none unless Complete
};

/// Bounds on one fetch. 1000 records take about 20 s at 9600 baud, and 8 times that at 1200.
struct FetchLimits
{
    int attempts = 3;    ///< readings of the whole history, until no record moved meanwhile
    int repetitions = 5; ///< requests that may be repeated after a bad reply, over the whole fetch
    std::chrono::milliseconds time = std::chrono::minutes(5);
};

/// Reads the whole history of the unit at `address` (1-255). Holds it in memory, at most
/// unitmap::historyCapacity records.
History fetchHistory(Transaction& transaction, int address, const FetchLimits& limits = {});

} // namespace driver
