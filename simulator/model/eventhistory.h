#pragma once

#include "historymap.h"

#include <array>
#include <cstdint>
#include <deque>

namespace simulation {

/// One event as the history registers carry it; the fields are those of unitmap::HistoryField.
using HistoryRecord = std::array<std::uint16_t, unitmap::historyRecordLength>;

/// The events of one unit: the last unitmap::historyCapacity alarms that appeared or cleared.
class EventHistory
{
public:
    /// Keeps an event; the oldest goes when there is no room. `civilMs` is the unit's own time.
    void add(int alarmIndex, bool appeared, std::int64_t civilMs);

    void clear();

    /// The oldest first.
    const std::deque<HistoryRecord>& records() const { return m_records; }

    /// Writes header and records as a reader gets them, from unitmap::historyHeaderRegister on. `registers`
    /// has room for unitmap::historyRegisterCount.
    void writeTo(std::uint16_t* registers) const;

private:
    std::deque<HistoryRecord> m_records;
    std::uint16_t m_lostCount = 0; ///< wraps
};

} // namespace simulation
