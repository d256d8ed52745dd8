#include "civiltime.h"

#include <QDateTime>

namespace simulation {

DateRegisters dateRegistersOf(std::int64_t civilMs)
{
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(civilMs, Qt::UTC);
    const QDate date = moment.date();
    const QTime time = moment.time();
    const int fields[] = {date.year() % 100, date.month(),  date.day(),
                          time.hour(),       time.minute(), time.second()};
    DateRegisters registers{};
    for (std::size_t i = 0; i < registers.size(); ++i)
        registers[i] = static_cast<std::uint16_t>(fields[i]);
    return registers;
}

std::optional<std::int64_t> civilMsOf(const std::uint16_t* dateRegisters)
{
    if (dateRegisters[0] > 99)
        return std::nullopt;
    const QDate date(2000 + dateRegisters[0], dateRegisters[1], dateRegisters[2]);
    const QTime time(dateRegisters[3], dateRegisters[4], dateRegisters[5]);
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch();
}

} // namespace simulation
