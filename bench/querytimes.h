#pragma once

#include <atomic>
#include <cstdint>

/// What the timing driver keeps of the queries of one process, in a file that others can look into meanwhile.
struct QueryTimes
{
    /// One for each thread that queries, which is one for each unit. A query begins with its cycle.
    struct Unit
    {
        std::atomic<std::uint64_t> queries;
        std::atomic<std::uint64_t> failures;
        std::atomic<std::uint64_t> late;        ///< began more than lateNs after they were due
        std::atomic<std::int64_t> worstDelayNs; ///< since somebody last set it to 0
    };

    static constexpr std::int64_t periodNs = 100000000; ///< a cycle is due so long after the last one began
    static constexpr std::int64_t lateNs = 50000000;
    static constexpr int maxUnits = 256;

    std::atomic<std::uint32_t> unitCount;
    Unit units[maxUnits];
};

/// In the working directory; the file is as long as a QueryTimes, made before the driver is used.
constexpr char queryTimesFile[] = "query-times";
/// The driver that does the work, in the working directory.
constexpr char drivenLibrary[] = "./driver.so";
