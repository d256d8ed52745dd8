#include "trendvalue.h"

#include <QRegularExpression>
#include <QStringList>
#include <QtMath>

namespace {

double number(const QString& text)
{
    bool isNumber = false;
    const double value = text.trimmed().toDouble(&isNumber);
    return isNumber && qIsFinite(value) ? value : qQNaN();
}

} // namespace

QVector<double> trendvalue::phases(const QString& text)
{
    constexpr int maxPhases = 3;
    QVector<double> values;
    const QStringList parts = text.split(QLatin1Char('/'));
    for (const QString& part : parts.mid(0, maxPhases))
        values += number(part);
    return values;
}

// Each has one digit behind its point: that is where the first one ends, whatever the sign of the second.
QVector<double> trendvalue::halves(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^\\s*(-?[0-9]+\\.[0-9])(-?[0-9]+\\.[0-9])\\s*$"));
    const QRegularExpressionMatch match = form.match(text);
    return {qAbs(number(match.captured(1))), qAbs(number(match.captured(2)))};
}

QVector<double> trendvalue::single(const QString& text)
{
    return {number(text)};
}
