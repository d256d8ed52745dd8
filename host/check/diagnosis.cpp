#include "diagnosis.h"

#include "advicerows.h"
#include "modbushelpers.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace diagnosis {

namespace {

constexpr int shortestFrame = 4; // unit id, function, CRC
constexpr int exceptionLength = 5;
constexpr int exceptionBit = 0x80;
constexpr int lastReadFunction = 4;
constexpr int headAndCrc = 5; // of a reply to a read: unit id, function, byte count, CRC

const unsigned char* bytesOf(const QByteArray& frame)
{
    return reinterpret_cast<const unsigned char*>(frame.constData());
}

bool isException(const QByteArray& answer)
{
    return answer.size() == exceptionLength && (bytesOf(answer)[1] & exceptionBit) != 0;
}

/// Whether the answer is one to the request, of whatever unit. The CRC alone tells nothing over TCP, where
/// the port access makes it.
bool isSound(const Exchange& exchange)
{
    const QByteArray& answer = exchange.answer;
    if (exchange.request.size() < shortestFrame || answer.size() < shortestFrame ||
        checkModbufCRC(bytesOf(answer), answer.size()) != 0)
        return false;
    const int asked = bytesOf(exchange.request)[1];
    if (bytesOf(answer)[1] != asked)
        return isException(answer) && bytesOf(answer)[1] == (asked | exceptionBit);
    return asked > lastReadFunction || answer.size() == bytesOf(answer)[2] + headAndCrc;
}

} // namespace

int otherUnitIn(const Exchanges& exchanges, int address)
{
    for (const Exchange& exchange : exchanges) {
        if (isSound(exchange) && bytesOf(exchange.answer)[0] != address)
            return bytesOf(exchange.answer)[0];
    }
    return 0;
}

Finding judge(const Exchanges& exchanges, int address, int timeoutMs, bool isConnected)
{
    // The last exchange is the one that failed: a driver stops there.
    const Exchange last = exchanges.isEmpty() ? Exchange() : exchanges.constLast();
    if (last.answer.isEmpty() && !isConnected)
        return Finding::ConnectionClosed;
    if (isSound(last)) {
        if (bytesOf(last.answer)[0] != address)
            return Finding::OtherUnit;
        if (isException(last.answer))
            return Finding::Exception;
        return last.tookMs > timeoutMs ? Finding::TooLate : Finding::Incomplete;
    }
    if (exchanges.size() > 1)
        return Finding::Incomplete;
    return last.answer.isEmpty() ? Finding::NoBytes : Finding::NoAnswers;
}

QString advice(Finding finding, const Facts& facts)
{
    const auto* row = std::find_if(std::begin(adviceRows), std::end(adviceRows),
                                   [=](const AdviceRow& each) { return each.finding == finding; });
    if (row == std::end(adviceRows))
        return {};
    QString text = QString::fromLatin1(facts.isTcp ? row->onTcp : row->onLine);
    const std::pair<const char*, QString> names[] = {
        {"{target}", facts.target},
        {"{settings}", facts.settings},
        {"{group}", facts.group},
        {"{users}", facts.users},
        {"{timeout}", QString::number(facts.timeoutMs)},
        {"{address}", QString::number(facts.address)},
        {"{other}", QString::number(facts.otherUnit)},
    };
    for (const auto& [name, value] : names)
        text.replace(QLatin1String(name), value);
    return text;
}

} // namespace diagnosis
