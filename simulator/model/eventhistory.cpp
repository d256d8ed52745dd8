#include "eventhistory.h"

#include "civiltime.h"

#include <algorithm>

namespace simulation {

void EventHistory::add(int alarmIndex, bool appeared, std::int64_t civilMs)
{
    HistoryRecord record{};
    record[unitmap::HistoryCode] = static_cast<std::uint16_t>(alarmIndex);
    record[unitmap::HistoryState] = appeared ? 1 : 0;
    const DateRegisters date = dateRegistersOf(civilMs);
    std::copy(date.begin(), date.end(), record.begin() + unitmap::HistoryYear);
    m_records.push_back(record);
    if (m_records.size() > unitmap::historyCapacity) {
        m_records.pop_front();
        ++m_lostCount;
    }
}

void EventHistory::clear()
{
    m_lostCount = static_cast<std::uint16_t>(m_lostCount + m_records.size());
    m_records.clear();
}

void EventHistory::writeTo(std::uint16_t* registers) const
{
    std::fill_n(registers, unitmap::historyRegisterCount, std::uint16_t(0));
    registers[0] = static_cast<std::uint16_t>(m_records.size());
    registers[1] = m_lostCount;
    std::uint16_t* next = registers + (unitmap::historyRegister - unitmap::historyHeaderRegister);
    for (const HistoryRecord& record : m_records)
        next = std::copy(record.begin(), record.end(), next);
}

} // namespace simulation
