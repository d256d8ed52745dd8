#include "displaytext.h"

namespace {

constexpr int shortestDate = 10; // characters, as in "2024/05/06"

QString integers(const QMap<int, QVariant>& data, int pointId, int count)
{
    QStringList texts;
    for (int i = 0; i < count; ++i)
        texts << QString::number(data.value(pointId + i).toInt());
    return texts.join(QLatin1Char('/'));
}

QString decimals(const QMap<int, QVariant>& data, int pointId, int count, int digits)
{
    QStringList texts;
    for (int i = 0; i < count; ++i)
        texts << QString::number(static_cast<double>(data.value(pointId + i).toFloat()), 'f', digits);
    return texts.join(QLatin1Char('/'));
}

QString text(const QMap<int, QVariant>& data, int pointId, int count)
{
    // White space goes before the text is cut at its zero byte: deliberate, blanks in front of the zero stay.
    return QString::fromUtf8(displaytext::bytes(data, pointId, count).trimmed().constData());
}

QString dateAndTime(const QMap<int, QVariant>& data, int pointId, int count)
{
    static constexpr char separators[] = "// ::";
    QString date = QStringLiteral("20");
    for (int i = 0; i < count; ++i) {
        date += data.value(pointId + i).toString().rightJustified(2, QLatin1Char('0'));
        if (i < int(sizeof separators) - 1)
            date += QLatin1Char(separators[i]);
    }
    return date.size() < shortestDate ? QString() : date;
}

QString optionText(const ParameterInformation& record, int rawValue)
{
    for (auto option = record.comboMap.begin(); option != record.comboMap.end(); ++option) {
        if (option.value() == rawValue)
            return option.key() + record.unit;
    }
    return {};
}

} // namespace

namespace displaytext {

QByteArray bytes(const QMap<int, QVariant>& data, int firstPointId, int count)
{
    QByteArray result;
    for (int i = 0; i < count; ++i)
        result.append(static_cast<char>(data.value(firstPointId + i).toInt() & 0xFF));
    return result;
}

QString value(const ParameterInformation& record, const QMap<int, QVariant>& data)
{
    const int pointId = record.pointId;
    switch (record.type) {
    case displaytype::integer:
        return integers(data, pointId, 1) + record.unit;
    case displaytype::threeIntegers:
        return integers(data, pointId, 3) + record.unit;
    case displaytype::tenths:
        return decimals(data, pointId, 1, 1) + record.unit;
    case displaytype::threeTenths:
        return decimals(data, pointId, 3, 1) + record.unit;
    case displaytype::hundredths:
        return decimals(data, pointId, 1, 2) + record.unit;
    case displaytype::threeHundredths:
        return decimals(data, pointId, 3, 2) + record.unit;
    case displaytype::text:
        if (record.pointCount <= 0)
            return {};
        if (pointId == systemTimePoint || pointId == lastDischargePoint)
            return dateAndTime(data, pointId, record.pointCount);
        return text(data, pointId, record.pointCount) + record.unit;
    case displaytype::option:
        return optionText(record, data.value(pointId).toInt());
    default:
        return {};
    }
}

QString limits(const ParameterInformation& record, const QString& separator)
{
    if (!record.hasRange())
        return {};
    const double ratio = static_cast<double>(record.ratio);
    return QString::number(record.minRaw * ratio) + separator + QString::number(record.maxRaw * ratio);
}

QString range(const ParameterInformation& record)
{
    return record.hasRange() ? limits(record, QStringLiteral("-")) : QStringLiteral("-");
}

} // namespace displaytext
