#include "faultcourse.h"

#include <QDateTime>

#include <algorithm>

namespace faultcourse {

namespace {

constexpr int restored = 1040;
constexpr int lost = 1041;
constexpr int data = 2007;

constexpr int pointCount = 512 + 276 + 164;
constexpr qint64 truthMs = 6000; // a value counts as right if the unit held it so recently
constexpr qint64 resolutionMs = 1000;

/// Follows the reports of one unit in their order. What its functions return is wrong; empty is right.
struct Follower
{
    QString take(const Report& report);
    QString takeLoss();
    QString takeValues(const Report& report);

    const Truth& truth;
    const int retries;
    const qint64 returnMs;
    bool isLost = false;
    int failed = 0; // data events in a row that repeated old values
    Values values{};
    qint64 heardMs = 0; // first answer
    qint64 lostMs = 0;  // end of the cycle that told the first loss
    qint64 freshMs = 0; // first data all of which the unit held after its return
};

QString Follower::take(const Report& report)
{
    switch (report.type) {
    case restored:
        isLost = false;
        heardMs = heardMs ? heardMs : report.latestMs;
        break;
    case lost:
        return takeLoss();
    case data:
        return takeValues(report);
    default:
        break;
    }
    return {};
}

QString Follower::takeLoss()
{
    isLost = true;
    // Every cycle reports its data, and that of the last failure comes behind the loss.
    return failed == retries - 1 ? QString() : QStringLiteral("lost after %1 failures").arg(failed + 1);
}

QString Follower::takeValues(const Report& report)
{
    const bool isUnchanged = report.values == values;
    values = report.values;
    failed = report.isLive ? 0 : failed + 1;
    if (isLost && !lostMs)
        lostMs = report.latestMs;
    if (!report.isLive)
        return isUnchanged ? QString() : QStringLiteral("values of a query that failed");
    if (isLost || !heardMs || report.values.size() != pointCount)
        return QStringLiteral("%1 values of a lost unit, or too few").arg(report.values.size());
    const auto [heldMs, point] = truth.oldest(report.values, report.latestMs);
    if (heldMs < report.earliestMs - truthMs)
        return QStringLiteral("point %1 has a value of %2 ms ago").arg(point).arg(report.earliestMs - heldMs);
    if (!freshMs && heldMs >= returnMs)
        freshMs = report.latestMs;
    return {};
}

} // namespace

Report reportOf(const QJsonObject& event, qint64 readMs)
{
    const QJsonObject record = event.value(QStringLiteral("record")).toObject();
    const QString time = record.value(QStringLiteral("timeStr")).toString();
    Report report;
    report.earliestMs =
        QDateTime::fromString(time, QStringLiteral("yyyy-MM-dd hh:mm:ss")).toMSecsSinceEpoch();
    report.latestMs = qMin(readMs, report.earliestMs + resolutionMs);
    report.type = event.value(QStringLiteral("type")).toInt();
    if (report.type != data)
        return report;
    const QJsonObject values = record.value(QStringLiteral("data")).toObject();
    report.isLive = event.value(QStringLiteral("live")).toBool();
    report.values.reserve(values.size());
    for (auto value = values.begin(); value != values.end(); ++value)
        report.values.append({value.key().toInt(), static_cast<float>(value.value().toDouble())});
    return report;
}

Truth::Truth(const QList<QJsonObject>& trace)
{
    for (const QJsonObject& line : trace) {
        const auto atMs = static_cast<qint64>(line.value(QStringLiteral("t")).toDouble());
        if (line.contains(QStringLiteral("fault")))
            m_faults.append(atMs);
        const QJsonObject points = line.value(QStringLiteral("points")).toObject();
        for (auto point = points.begin(); point != points.end(); ++point)
            m_holds[point.key().toInt()].append({atMs, static_cast<float>(point.value().toDouble())});
    }
}

qint64 Truth::lastHeld(int point, float value, qint64 untilMs) const
{
    const auto holds = m_holds.constFind(point);
    if (holds == m_holds.constEnd())
        return 0;
    const auto isLater = [](qint64 ms, const Hold& hold) { return ms < hold.beginMs; };
    auto hold = std::upper_bound(holds->begin(), holds->end(), untilMs, isLater);
    for (qint64 endMs = untilMs; hold != holds->begin(); endMs = hold->beginMs) {
        --hold;
        if (hold->value == value)
            return endMs;
    }
    return 0;
}

QPair<qint64, int> Truth::oldest(const Values& values, qint64 untilMs) const
{
    QPair<qint64, int> oldest{untilMs, 0};
    for (const auto& [point, value] : values)
        oldest = qMin(oldest, {lastHeld(point, value, untilMs), point});
    return oldest;
}

QString judge(const Expectation& expected, const QVector<Report>& reports, const Truth& truth)
{
    const QVector<qint64>& faults = truth.faults();
    if (faults.size() != expected.faults)
        return QStringLiteral("%1 faults came").arg(faults.size());
    const qint64 returnMs = faults.constLast() + expected.lengthMs;
    Follower follower{truth, expected.retries, returnMs};
    for (const Report& report : reports) {
        const QString wrong = follower.take(report);
        if (!wrong.isEmpty())
            return wrong;
    }
    if (!follower.heardMs || (follower.lostMs && follower.lostMs < faults.constFirst()))
        return QStringLiteral("not heard before the fault");
    if (expected.outcome != Either && (follower.lostMs != 0) != (expected.outcome == Fails))
        return follower.lostMs ? QStringLiteral("told lost") : QStringLiteral("loss not told");
    const qint64 silentMs = follower.lostMs - faults.constFirst();
    if (silentMs > expected.retries * (expected.failureMs + expected.pauseMs) + resolutionMs)
        return QStringLiteral("loss told after %1 ms").arg(silentMs);
    if (!follower.freshMs || follower.isLost)
        return QStringLiteral("does not come back");
    const qint64 staleMs = follower.freshMs - returnMs;
    if (staleMs > expected.failureMs + expected.pauseMs + resolutionMs)
        return QStringLiteral("back after %1 ms").arg(staleMs);
    return {};
}

} // namespace faultcourse
