#include "logrow.h"

namespace logrow {

namespace {

// Reads points of one data map as texts. asprintf is used because it ignores the process's locale: hosts
// compare stored rows, which must not change with the language.
class Points
{
public:
    explicit Points(const QMap<int, QVariant>& data)
        : m_data(data)
    {}

    int integer(int pointId) const { return m_data.value(pointId).toInt(); }
    float number(int pointId) const { return m_data.value(pointId).toFloat(); }
    double asDouble(int pointId) const { return static_cast<double>(number(pointId)); }

    QString one(int pointId) const { return QString::asprintf("%.1f", asDouble(pointId)); }

    // Plus side then minus side with nothing between: the minus side brings its own sign. Deliberate, rows
    // that hosts have stored read like 240.0-240.0.
    QString plusAndMinus(int pointId) const
    {
        return QString::asprintf("%.1f%.1f", asDouble(pointId), asDouble(pointId + 1));
    }

    // Only a phase count of exactly 3 is three-phase; anything else, 0 and absent included, is single.
    QString phases(int phaseCountPoint, int pointId) const
    {
        if (integer(phaseCountPoint) != 3)
            return one(pointId);
        return QString::asprintf("%.1f/%.1f/%.1f", asDouble(pointId), asDouble(pointId + 1),
                                 asDouble(pointId + 2));
    }

private:
    const QMap<int, QVariant>& m_data;
};

QString textAt(const QVector<QString>& texts, int code)
{
    return code >= 0 && code < texts.size() ? texts.at(code) : texts.constFirst();
}

// Truncated, unlike every other code: 3.9 is still state 3. A value that no int can hold counts as 0.
int truncatedCode(float value)
{
    return value > -1.0F && value < 1.0e6F ? static_cast<int>(value) : 0;
}

} // namespace

QStringList valuesOf(const QMap<int, QVariant>& data, const QVector<QString>& batteryStates,
                     const QVector<QString>& outputModes)
{
    const Points points(data);
    const int temperatureFloorC = -10; // below it no sensor is fitted
    return {
        points.phases(4132, 4133),
        points.phases(4132, 4139),
        points.phases(4191, 4192),
        points.one(4198), // the bypass frequency has no three-phase form
        points.phases(4162, 4163),
        points.phases(4162, 4166),
        points.phases(4162, 4178),
        points.phases(4162, 4184),
        points.one(4169),
        textAt(outputModes, points.integer(4161)),
        points.one(4109),
        points.plusAndMinus(4103),
        points.plusAndMinus(4105),
        points.integer(4107) >= temperatureFloorC ? points.one(4107) : QStringLiteral("-"),
        textAt(batteryStates, truncatedCode(points.number(4101))),
    };
}

} // namespace logrow
