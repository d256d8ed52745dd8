#include "settingentry.h"

#include <QLocale>
#include <QRegularExpression>

#include <limits>

namespace {

constexpr int least = std::numeric_limits<int>::min();
constexpr int greatest = std::numeric_limits<int>::max();

float number(const QString& text)
{
    constexpr double bound = 1e30; // a float holds it, an int by far does not
    bool isNumber = false;
    double value = text.toDouble(&isNumber);
    if (!isNumber && !qIsInf(value)) // infinite: a number, but one too large
        value = QLocale().toDouble(text);
    return qIsNaN(value) ? 0 : static_cast<float>(qBound(-bound, value, bound));
}

// Adding a half and truncating, also below zero, where -2.7 becomes -2: deliberate, units are set so.
int rounded(float value)
{
    const double raised = static_cast<double>(value) + 0.5;
    if (raised >= greatest)
        return greatest;
    return raised <= least ? least : static_cast<int>(raised);
}

} // namespace

namespace settingentry {

int rawFromText(const QString& text, float ratio)
{
    const float value = number(text);
    // Multiplying keeps entries exact that dividing by 0.1 or 0.01 would not. qFuzzyCompare allows 1/100000.
    if (qFuzzyCompare(ratio, 1.0F) || qIsNull(ratio))
        return rounded(value);
    if (qFuzzyCompare(ratio, 0.1F))
        return rounded(value * 10);
    if (qFuzzyCompare(ratio, 0.01F))
        return rounded(value * 100);
    return rounded(value / ratio);
}

int rawFromOption(const QString& text, int value, float ratio)
{
    // Stored values have no fraction: the half ampere of the charge current limit comes back from its text.
    const bool isHalf = value == 0 && text == QLatin1String("0.5");
    const float chosen = isHalf ? 0.5F : static_cast<float>(value);
    return rounded(qIsNull(ratio) ? chosen : chosen / ratio);
}

bool isAllowed(const ParameterInformation& record, int rawValue)
{
    if (record.hasRange())
        return rawValue >= record.minRaw && rawValue <= record.maxRaw;
    return record.type == displaytype::text || (rawValue != least && rawValue != greatest);
}

QString nodeText(const ParameterInformation& record, const QString& entry)
{
    if (record.type != displaytype::text)
        return entry;
    if (record.pointId != systemTimePoint)
        return entry.left(qMax(record.pointCount, 0));
    static const QRegularExpression digits(QStringLiteral("\\d+"));
    QStringList numbers;
    auto matches = digits.globalMatch(entry.startsWith(QLatin1String("20")) ? entry.mid(2) : entry);
    while (matches.hasNext())
        numbers << matches.next().captured();
    return numbers.join(QLatin1Char(','));
}

QString requestValue(const ParameterInformation& record, const QString& nodeText, int rawValue)
{
    const QString value = record.type == displaytype::text ? nodeText : QString::number(rawValue);
    return QString::number(record.pointId) + QLatin1Char(',') + value;
}

} // namespace settingentry
