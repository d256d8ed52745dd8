#include "historyfetch.h"

#include "modbushelpers.h"

namespace driver {

namespace {

constexpr int replyHeadLength = 3; ///< unit id, function, byte count

struct Header
{
    int count = 0;
    int lost = 0;
};

/// One fetch from its first request to its last.
class Fetch
{
public:
    Fetch(Transaction& transaction, int address, const FetchLimits& limits)
        : m_transaction(transaction)
        , m_address(address)
        , m_limits(limits)
        , m_deadline(Clock::now() + limits.time)
    {}

    History run()
    {
        History history;
        history.result = FetchResult::Unsteady;
        for (int i = 0; i < m_limits.attempts && history.result == FetchResult::Unsteady; ++i)
            history.result = attempt(history.records);
        if (history.result != FetchResult::Complete)
            history.records.clear();
        history.lineError = m_lineError;
        return history;
    }

private:
    using Clock = std::chrono::steady_clock;

    FetchResult attempt(std::vector<HistoryRecord>& records)
    {
        records.clear();
        Header before;
        Header after;
        if (!readHeader(before))
            return FetchResult::LineFailed;
        if (before.count > unitmap::historyCapacity)
            return FetchResult::BadHistory;
        int page = 0;
        for (int left = before.count; left > 0; left -= page) {
            page = unitmap::nextHistoryPage(left, page);
            if (!readPage(page, records))
                return FetchResult::LineFailed;
        }
        // What came on top meanwhile is for the next download; what was lost has moved the rest.
        if (!readHeader(after))
            return FetchResult::LineFailed;
        return after.lost == before.lost ? FetchResult::Complete : FetchResult::Unsteady;
    }

    bool readHeader(Header& header)
    {
        if (!read(unitmap::historyHeaderRegister, unitmap::historyHeaderCount))
            return false;
        header = {registerAt(0), registerAt(1)};
        return true;
    }

    /// Appends so many records, beginning with the first that is not among `records` yet.
    bool readPage(int count, std::vector<HistoryRecord>& records)
    {
        constexpr int length = unitmap::historyRecordLength;
        const int first = unitmap::historyRegister + static_cast<int>(records.size()) * length;
        if (!read(first, count * length))
            return false;
        for (int i = 0; i < count; ++i) {
            HistoryRecord record{};
            for (int field = 0; field < length; ++field)
                record[static_cast<std::size_t>(field)] = registerAt(i * length + field);
            records.push_back(record);
        }
        return true;
    }

    /// A request that failed is repeated: one glitch in 20 s of reading shall not cost the whole. What the
    /// unit itself refuses is not asked again.
    bool read(int firstRegister, int count)
    {
        const Request request =
            readRequest(m_address, {unitmap::ReadInputRegisters, firstRegister, count, 0});
        while (Clock::now() < m_deadline) {
            m_lineError = m_transaction.run(request);
            if (m_lineError == ReplyError::None)
                return true;
            if (m_lineError == ReplyError::Exception || m_repeated++ >= m_limits.repetitions)
                return false;
        }
        m_lineError = ReplyError::NoAnswer;
        return false;
    }

    std::uint16_t registerAt(int index) const
    {
        const auto offset = static_cast<std::ptrdiff_t>(index) * 2;
        return UINT8_2_to_UINT16(m_transaction.reply() + replyHeadLength + offset);
    }

    Transaction& m_transaction;
    const int m_address;
    const FetchLimits m_limits;
    const Clock::time_point m_deadline;
    int m_repeated = 0;
    ReplyError m_lineError = ReplyError::None;
};

} // namespace

History fetchHistory(Transaction& transaction, int address, const FetchLimits& limits)
{
    return Fetch(transaction, address, limits).run();
}

} // namespace driver
