#include "alarmcourse.h"

#include "../journal/journalreading.h"
#include "vek5font.h"

#include <algorithm>

namespace alarmcourse {

namespace {

constexpr int restored = 1040;
constexpr int lost = 1041;
constexpr int echo = 2001;
constexpr int alarm = 2006;
constexpr int data = 2007;
constexpr int statusPoint2368 = 2009;
constexpr int statusPoint2022 = 2010;

constexpr int firstAlarmPoint = 2000;
constexpr qint64 recoveryMs = 6000; // from the end of a silence until the unit is heard again

int typeOf(const QJsonObject& event)
{
    return event.value(QStringLiteral("type")).toInt();
}

int numberOf(const QJsonObject& event, const char* key)
{
    return event.value(QStringLiteral("record")).toObject().value(QLatin1String(key)).toInt();
}

QString lineOf(int type, int code, int state)
{
    return type == alarm ? QStringLiteral("%1 %2 %3").arg(type).arg(code).arg(state) : QString::number(type);
}

bool held(const QVector<Transition>& real, int state, qint64 fromMs, qint64 toMs)
{
    for (int i = 0; i < real.size(); ++i) {
        const qint64 endMs = i + 1 < real.size() ? real.at(i + 1).atMs : toMs;
        if (real.at(i).state == state && real.at(i).atMs <= toMs && endMs >= fromMs)
            return true;
    }
    return false;
}

QString unfounded(const QVector<Transition>& real, const QVector<Transition>& told)
{
    int expected = 1;
    for (const Transition& event : told) {
        if (event.state != expected)
            return QStringLiteral("state %1 told twice, at %2").arg(event.state).arg(event.atMs);
        if (!held(real, event.state, event.atMs - dwellMs, event.atMs))
            return QStringLiteral("state %1 told at %2 was none").arg(event.state).arg(event.atMs);
        expected = 1 - expected;
    }
    return {};
}

QString untold(const QVector<Transition>& real, const QVector<Transition>& told, const Span& heard,
               const Span& silence, int* checked)
{
    for (int i = 0; i < real.size(); ++i) {
        const Transition& change = real.at(i);
        const qint64 endMs = i + 1 < real.size() ? real.at(i + 1).atMs : heard.endMs;
        const bool isSilent = change.atMs < silence.endMs + recoveryMs && endMs > silence.beginMs - dwellMs;
        if (endMs - change.atMs < dwellMs || change.atMs < heard.beginMs ||
            change.atMs + dwellMs > heard.endMs || isSilent)
            continue;
        const auto tellsIt = [&](const Transition& event) {
            return event.state == change.state && event.atMs >= change.atMs &&
                   event.atMs <= change.atMs + dwellMs;
        };
        const auto count = std::count_if(told.begin(), told.end(), tellsIt);
        if (count != 1)
            return QStringLiteral("state %1 of %2 told %3 times")
                .arg(change.state)
                .arg(change.atMs)
                .arg(count);
        ++*checked;
    }
    return {};
}

} // namespace

Course truthOf(const QList<QJsonObject>& trace)
{
    Course course;
    for (const QJsonObject& line : trace) {
        const auto atMs = static_cast<qint64>(line.value(QStringLiteral("t")).toDouble());
        const QJsonObject points = line.value(QStringLiteral("points")).toObject();
        for (auto point = points.begin(); point != points.end(); ++point) {
            const int index = point.key().toInt() - firstAlarmPoint;
            if (index >= 0 && index < alarmCount)
                course[index] << Transition{atMs, point.value().toInt()};
        }
    }
    return course;
}

Span faultsOf(const QList<QJsonObject>& trace)
{
    Span span;
    for (const QJsonObject& line : trace) {
        if (!line.contains(QStringLiteral("fault")))
            continue;
        span.endMs = static_cast<qint64>(line.value(QStringLiteral("t")).toDouble());
        span.beginMs = span.beginMs == 0 ? span.endMs : span.beginMs;
    }
    return span;
}

QVector<Kept> journalled(const QString& file)
{
    QVector<Kept> journal;
    const auto rows =
        readRows(file, QStringLiteral("SELECT time_ms, type, code, state, text FROM event ORDER BY id"));
    for (const QVariantList& row : rows)
        journal << Kept{row.value(0).toLongLong(), row.value(1).toInt(), row.value(2).toInt(),
                        row.value(3).toInt(), row.value(4).toString()};
    return journal;
}

QVector<Kept> within(const QVector<Kept>& journal, const Span& span)
{
    QVector<Kept> part;
    std::copy_if(journal.begin(), journal.end(), std::back_inserter(part),
                 [&](const Kept& event) { return event.atMs >= span.beginMs && event.atMs <= span.endMs; });
    return part;
}

QStringList linesOf(const QList<QJsonObject>& events)
{
    QStringList lines;
    for (const QJsonObject& event : events) {
        if (typeOf(event) != data && typeOf(event) != echo)
            lines << lineOf(typeOf(event), numberOf(event, "alarmId"), numberOf(event, "alarmState"));
    }
    return lines;
}

QStringList linesOf(const QVector<Kept>& journal)
{
    QStringList lines;
    for (const Kept& event : journal)
        lines << lineOf(event.type, event.code, event.state);
    return lines;
}

QVector<QVector<int>> reportsOf(const QList<QJsonObject>& events)
{
    QVector<QVector<int>> reports(1);
    for (const QJsonObject& event : events) {
        if (typeOf(event) == alarm)
            reports.last() << numberOf(event, "alarmId");
        else if (typeOf(event) == data)
            reports << QVector<int>();
    }
    return reports;
}

QString disorder(const QVector<QVector<int>>& reports)
{
    const auto isBefore = [](int code, int next) { return code % alarmCount < next % alarmCount; };
    for (const QVector<int>& codes : reports) {
        for (int i = 1; i < codes.size(); ++i) {
            if (!isBefore(codes.at(i - 1), codes.at(i)))
                return QStringLiteral("%1 told before %2").arg(codes.at(i - 1)).arg(codes.at(i));
        }
    }
    return {};
}

QString misworded(const QVector<Kept>& journal)
{
    const QStringList texts = vek5Font::instance()->getEventLogDesc();
    for (const Kept& event : journal) {
        switch (event.type) {
        case alarm:
            if (event.text != texts.value(event.code) || (event.code < alarmCount) != (event.state == 1))
                return QStringLiteral("code %1, state %2: %3")
                    .arg(event.code)
                    .arg(event.state)
                    .arg(event.text);
            break;
        case restored:
        case lost:
        case statusPoint2368:
        case statusPoint2022:
            break;
        default:
            return QStringLiteral("type %1: %2").arg(event.type).arg(event.text);
        }
    }
    return {};
}

QString disagreement(const Course& truth, const QVector<Kept>& run, const Span& heard, const Span& silence,
                     int* checked)
{
    Course told;
    for (const Kept& event : run) {
        if (event.type == alarm)
            told[event.code % alarmCount] << Transition{event.atMs, event.state};
    }
    for (int index = 0; index < alarmCount; ++index) {
        QString wrong = unfounded(truth.value(index), told.value(index));
        if (wrong.isEmpty())
            wrong = untold(truth.value(index), told.value(index), heard, silence, checked);
        if (!wrong.isEmpty())
            return QStringLiteral("alarm %1: %2").arg(index).arg(wrong);
    }
    return {};
}

} // namespace alarmcourse
