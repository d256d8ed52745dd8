#include "readback.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>

namespace {

constexpr double tolerance = 0.001; // values come as float, with two decimals at most

bool isSameNumber(const QString& text, double present)
{
    bool isNumber = false;
    double number = text.toDouble(&isNumber);
    if (!isNumber)
        number = QLocale().toDouble(text, &isNumber);
    return isNumber && qAbs(number - present) < tolerance;
}

// The unit's clock runs on, so its last number, the seconds, says nothing.
bool isSameTime(const QStringList& numbers, int point, const QMap<int, QVariant>& data)
{
    for (int i = 0; i < numbers.size() - 1; ++i) {
        if (numbers.at(i).toInt() != data.value(point + i, -1).toInt())
            return false;
    }
    return true;
}

bool isSameText(const QString& text, int point, const QMap<int, QVariant>& data)
{
    const QByteArray bytes = text.toUtf8();
    for (int i = 0; i < bytes.size(); ++i) {
        if ((data.value(point + i).toInt() & 0xFF) != static_cast<uchar>(bytes.at(i)))
            return false;
    }
    return bytes.size() > 1; // one character is a number as well
}

} // namespace

int readback::pointOf(const QVariantMap& request)
{
    return request.value(QStringLiteral("controlValue")).toString().section(QLatin1Char(','), 0, 0).toInt();
}

bool readback::isTaken(const QVariantMap& request, const QMap<int, QVariant>& data)
{
    const QString setting = request.value(QStringLiteral("controlValue")).toString();
    const int point = pointOf(request);
    const QString value = setting.section(QLatin1Char(','), 1);
    const QStringList numbers = value.split(QLatin1Char(','));
    if (!data.contains(point))
        return false;
    if (numbers.size() > 1)
        return isSameTime(numbers, point, data);
    const double present = data.value(point).toDouble();
    return isSameNumber(value, present) ||
           isSameNumber(request.value(QStringLiteral("nodeValue")).toString(), present) ||
           isSameText(value, point, data);
}
