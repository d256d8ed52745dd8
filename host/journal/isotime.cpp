#include "isotime.h"

#include <QDateTime>
#include <QRegularExpression>

namespace {

constexpr int secondsPerMinute = 60;
constexpr int minutesPerHour = 60;
constexpr int maxOffsetMinutes = 14 * minutesPerHour; // the largest in use anywhere

// The offset in seconds from "+hh:mm", "+hhmm", "+hh" or "Z".
std::optional<int> offsetSeconds(QString text)
{
    if (text.compare(QLatin1String("Z"), Qt::CaseInsensitive) == 0)
        return 0;
    const int sign = text.startsWith(QLatin1Char('-')) ? -1 : 1;
    text.remove(QLatin1Char(':'));
    const int hours = text.mid(1, 2).toInt();
    const int minutes = text.mid(3, 2).toInt();
    const int total = hours * minutesPerHour + minutes;
    if (minutes >= minutesPerHour || total > maxOffsetMinutes)
        return {};
    return sign * total * secondsPerMinute;
}

} // namespace

QString isotime::fromUtcMs(qint64 utcMs)
{
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(utcMs);
    QString text = local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs);
    // Always an offset, so that every line of a file has the same form.
    if (text.endsWith(QLatin1Char('Z')))
        text.replace(text.size() - 1, 1, QLatin1String("+00:00"));
    return text;
}

std::optional<qint64> isotime::toUtcMs(const QString& text, DateMeans dateMeans)
{
    static const QRegularExpression form(
        QStringLiteral("^([0-9]{4}-[0-9]{2}-[0-9]{2})"
                       "(?:[T ]([0-9]{2}:[0-9]{2})(:[0-9]{2}(?:[.,][0-9]{1,3})?)?"
                       "(Z|z|[+-][0-9]{2}(?::?[0-9]{2})?)?)?$"));
    const QRegularExpressionMatch match = form.match(text);
    const QDate date = QDate::fromString(match.captured(1), Qt::ISODate);
    if (!match.hasMatch() || !date.isValid())
        return {};
    if (match.capturedLength(2) == 0) {
        const QDate day = dateMeans == DateMeans::EndOfDay ? date.addDays(1) : date;
        return QDateTime(day, QTime(0, 0)).toMSecsSinceEpoch();
    }
    const QString seconds = match.capturedLength(3) > 0 ? match.captured(3) : QStringLiteral(":00");
    const QTime time = QTime::fromString(match.captured(2) + seconds, Qt::ISODateWithMs);
    if (!time.isValid())
        return {};
    if (match.capturedLength(4) == 0)
        return QDateTime(date, time).toMSecsSinceEpoch();
    const std::optional<int> offset = offsetSeconds(match.captured(4));
    if (!offset)
        return {};
    return QDateTime(date, time, Qt::OffsetFromUTC, *offset).toMSecsSinceEpoch();
}
