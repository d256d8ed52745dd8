#include "flowdata.h"

#include <QtGlobal>

namespace {

using namespace flowtexts;

QString number(const QVariant& value, int decimals)
{
    if (decimals == 0)
        return QString::number(value.toInt());
    return QString::number(static_cast<double>(value.toFloat()), 'f', decimals);
}

QString numbers(const flowdata::Data& data, int firstPoint, int count, const char* unit)
{
    QStringList texts;
    for (int i = 0; i < count; ++i)
        texts << number(data.value(firstPoint + i), 1);
    return texts.join(QLatin1Char('/')) + QLatin1String(unit);
}

QString identity(const flowdata::Data& data, int firstPoint)
{
    QByteArray bytes;
    for (int i = 0; i < identityLength; ++i)
        bytes.append(static_cast<char>(data.value(firstPoint + i).toInt() & 0xFF));
    return QString::fromLatin1(bytes.constData()); // up to the first zero byte
}

} // namespace

namespace flowdata {

Flows flows(const Data& data)
{
    Flows result{};
    static_assert(std::size(flowPoints) == std::tuple_size<Flows>::value, "a flow lacks its points");
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = data.value(flowPoints[i][0]).toInt() == 1 && data.value(flowPoints[i][1]).toInt() == 1;
    return result;
}

void updateTexts(Texts& texts, const Data& data, const Tables& tables)
{
    for (const PhaseRow& row : phaseRows) {
        const int phases = data.value(row.phasePoint).toInt();
        if (phases == 1 || phases == 3)
            texts[row.text] = numbers(data, row.firstPoint, phases, row.unit);
    }
    for (const StateRow& row : stateRows) {
        const QStringList& table = tables[row.table];
        const int index = data.value(row.point, -1).toInt();
        if (index >= 0 && index < table.size())
            texts[row.text] = table.at(index);
    }
    for (const NumberRow& row : numberRows) {
        const QVariant value = data.value(row.point);
        if (value.isValid())
            texts[row.text] = value.toInt() < row.least
                                  ? QStringLiteral("-")
                                  : QString(number(value, row.decimals) + QString::fromUtf8(row.unit));
    }
    for (const RunRow& row : pairRows) {
        if (data.contains(row.firstPoint))
            texts[row.text] = numbers(data, row.firstPoint, 2, row.unit);
    }
    for (const RunRow& row : identityRows) {
        if (data.contains(row.firstPoint))
            texts[row.text] = identity(data, row.firstPoint);
    }
}

int chargePercent(const Data& data)
{
    return qBound(-1, data.value(chargePoint, -1).toInt(), 100);
}

} // namespace flowdata
