#include "columns.h"
#include "rig.h"
#include "testfiles.h"

#include <QDateTime>

#include <algorithm>

namespace {

constexpr int pointCount = 512 + 276 + 164;
constexpr qint64 truthMs = 6000; // a value counts as right if the unit held it so recently
constexpr qint64 resolutionMs = 1000;

using Values = QVector<QPair<int, float>>; // point and value

// One event of the host. Its record tells the time in whole seconds, and reading it here may be late on a
// busy machine: it was made between two moments.
struct Report
{
    qint64 earliestMs = 0;
    qint64 latestMs = 0;
    int type = 0;
    bool isLive = false; // a data event's values are those of an answer, and no repetition
    Values values;       // of a data event only
};

Report reportOf(const QJsonObject& event, qint64 readMs)
{
    const QJsonObject record = recordOf(event);
    const QString time = record.value(QStringLiteral("timeStr")).toString();
    Report report;
    report.earliestMs =
        QDateTime::fromString(time, QStringLiteral("yyyy-MM-dd hh:mm:ss")).toMSecsSinceEpoch();
    report.latestMs = qMin(readMs, report.earliestMs + resolutionMs);
    report.type = typeOf(event);
    const QJsonObject values = record.value(QStringLiteral("data")).toObject();
    report.isLive = event.value(QStringLiteral("live")).toBool();
    for (auto value = values.begin(); value != values.end(); ++value)
        report.values.append({value.key().toInt(), static_cast<float>(value.value().toDouble())});
    return report;
}

// What the unit held, and when a fault met a request, from the simulator's trace.
class Truth
{
public:
    explicit Truth(const QList<QJsonObject>& trace)
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

    const QVector<qint64>& faults() const { return m_faults; }

    // When the unit last held each of these values, looking back from untilMs: that of the value which is
    // gone the longest, and its point. 0 for a value that it never held.
    QPair<qint64, int> oldest(const Values& values, qint64 untilMs) const
    {
        QPair<qint64, int> oldest{untilMs, 0};
        for (const auto& [point, value] : values)
            oldest = qMin(oldest, {lastHeld(point, value, untilMs), point});
        return oldest;
    }

private:
    struct Hold
    {
        qint64 beginMs;
        float value;
    };

    qint64 lastHeld(int point, float value, qint64 untilMs) const
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

    QMap<int, QVector<Hold>> m_holds; // by point, in the order of time
    QVector<qint64> m_faults;
};

enum Outcome
{
    Copes, // not one query fails
    Fails, // every query that it meets: the loss has to be told
    Either // queries fail by turns, or meet the late reply of an earlier one
};

struct Expectation
{
    Outcome outcome = Either;
    int faults = 0;       // how often it is applied
    int retries = 0;      // failed queries in a row after which the loss is told
    qint64 lengthMs = 0;  // from the last request that it meets to the unit's return
    qint64 failureMs = 0; // what a cycle with a failed query takes at the most
    qint64 pauseMs = 0;   // before a connection is made anew
};

// Follows the reports of one unit in their order. What its functions return is wrong; empty is right.
struct Follower
{
    QString take(const Report& report)
    {
        if (report.type == Data)
            return takeValues(report);
        if (report.type == Restored) {
            isLost = false;
            heardMs = heardMs ? heardMs : report.latestMs;
        } else if (report.type == Lost) {
            isLost = true;
            // Every cycle reports its data, and that of the last failure comes behind the loss.
            if (failed != retries - 1)
                return QStringLiteral("lost after %1 failures").arg(failed + 1);
        }
        return {};
    }

    QString takeValues(const Report& report)
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
            return QStringLiteral("point %1 has a value of %2 ms ago")
                .arg(point)
                .arg(report.earliestMs - heldMs);
        if (!freshMs && heldMs >= returnMs)
            freshMs = report.latestMs;
        return {};
    }

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

// What is wrong with the reports; empty when nothing is.
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

constexpr int retries = 2;
constexpr int timeoutMs = 1000;      // a serial port's by default, a TCP connection's always
constexpr int cycleMs = 800;         // the pause of 100 ms and requests that are answered, on a busy machine
constexpr int pollIntervalMs = 1000; // as configured
constexpr int reconnectMs = 5000;    // the pause before a TCP connection is made
constexpr int limitMs = 120000;      // for all to be over, generous: sanitizers, two cores, other tests

struct FaultRow
{
    const char* fault;
    int times;    // queries that it meets
    int lengthMs; // from the last of them to the unit's return
    Outcome serialFirst;
    Outcome serialLast; // when the last request is met: what disturbs the next one meets the next query
    Outcome tcp;
    bool isOutage; // nobody waits for it inside a query
    bool closes;   // a TCP connection has to be made anew
};

// clang-format off
const QVector<FaultRow> quickRows{
    {"no-answer",    3,     0, Fails,  Fails,  Fails, false, false},
    {"late 500",     3,   500, Copes,  Copes,  Copes, false, false},
    {"late 1500",    3,  1500, Fails,  Fails,  Fails, false, false},
    {"wrong-crc",    3,     0, Fails,  Fails,  Fails, false, false},
    {"wrong-unit",   3,     0, Fails,  Fails,  Fails, false, false},
    {"truncated",    3,     0, Fails,  Fails,  Fails, false, false},
    {"duplicated",   3,     0, Fails,  Either, Fails, false, false},
    {"split",        3,   800, Copes,  Copes,  Fails, false, false},
    {"exception 6",  3,     0, Fails,  Fails,  Fails, false, false},
    {"noise",        3,     0, Fails,  Either, Fails, false, false},
    {"reset",        2,   100, Fails,  Fails,  Fails, true,  true},
    {"refused 7",    1,  7000, Fails,  Fails,  Fails, true,  true},
    {"black-hole 5", 1,  5000, Fails,  Fails,  Fails, true,  false},
};
const QVector<FaultRow> longRows{
    {"late 3000",     4,  3000, Either, Either, Either, false, false},
    {"late 5000",     4,  5000, Either, Either, Either, false, false},
    {"no-answer",     9,     0, Fails,  Fails,  Fails,  false, false},
    {"truncated 2",   9,     0, Fails,  Fails,  Fails,  false, false},
    {"split 15",      4,  2400, Copes,  Copes,  Fails,  false, false},
    {"noise 256",     9,     0, Fails,  Either, Fails,  false, false},
    {"reset",         5,   100, Fails,  Fails,  Fails,  true,  true},
    {"refused 25",    1, 25000, Fails,  Fails,  Fails,  true,  true},
    {"black-hole 25", 1, 25000, Fails,  Fails,  Fails,  true,  false},
};
// clang-format on

struct Unit
{
    QString key;
    QString fault;
    Expectation expected;
    qint64 overMs = 0; // when the last of it must have been told; 0 while faults are still to come
    QVector<Report> reports;
};

// A tenth of a second each, as the units step: in every block something changes, and no value comes twice
// within the time that counts.
QByteArray restlessScenario()
{
    QByteArray lines = "0 random alarms 2 0.5\n";
    for (int step = 0; step < 10 * limitMs / 1000; ++step) {
        const QByteArray number = QByteArray::number(step);
        lines += "+0.1 point 4032 " + number + "\n+0 point 4145 " + QByteArray::number(2000 + step);
        lines += "\n+0 point 4260 " + QByteArray::number(4000 + step) + "\n+0 setting 3055 " + number;
        lines += "\n+0 setting 3087 " + QByteArray::number(160 + step % 90) + '\n';
    }
    return lines;
}

Expectation expectationOf(const FaultRow& row, bool isTcp, bool isFirst, bool isPolled)
{
    Expectation expected;
    expected.outcome = isTcp ? row.tcp : isFirst ? row.serialFirst : row.serialLast;
    expected.faults = row.times;
    expected.retries = retries;
    expected.lengthMs = row.lengthMs;
    // Whatever disturbed a query is read away until the line has been silent for a time-out.
    expected.failureMs =
        2 * timeoutMs + cycleMs + (row.isOutage ? 0 : row.lengthMs) + (isPolled ? pollIntervalMs : 0);
    expected.pauseMs = isTcp && row.closes ? reconnectMs : 0;
    return expected;
}

QByteArray judgeAll(const Rig& rig, const std::vector<Unit>& units)
{
    QStringList wrong;
    for (const Unit& unit : units) {
        const Truth truth(rig.trace(unit.key + QStringLiteral(".trace")));
        const QString text = judge(unit.expected, unit.reports, truth);
        if (!text.isEmpty())
            wrong.append(unit.key + QStringLiteral(", ") + unit.fault + QStringLiteral(": ") + text);
    }
    return wrong.join(QLatin1Char('\n')).toUtf8();
}

} // namespace

// Every fault of line or unit against the built plugin in the built host: no wrong value, the loss told, and
// values again when the unit is back. One unit for each fault, all in one host.
class tst_FaultMatrix : public QObject
{
    Q_OBJECT

private slots:
    void faults_data()
    {
        const auto row =
            columns<QString, bool, bool>("request", "isPolled", "isLong"); // the faults meet this request
        row("first request", "function 2 block 0", false, false);
        row("last request", "function 3 block 87", true, false);
        row("long, first request", "function 2 block 0", true, true);
        row("long, last request", "function 3 block 87", false, true);
    }
    void faults()
    {
        QFETCH(QString, request);
        QFETCH(bool, isPolled);
        QFETCH(bool, isLong);
        Rig rig;
        rig.write("restless", restlessScenario());
        std::vector<Unit> units;
        QString lines;
        for (const FaultRow& row : isLong ? longRows : quickRows) {
            for (const bool isTcp : {false, true}) {
                const bool isFirst = request.contains(QLatin1String("function 2"));
                Unit unit;
                unit.key = (isTcp ? QStringLiteral("tcp%1") : QStringLiteral("serial%1")).arg(units.size());
                unit.fault = QStringLiteral("%1 %2 request %3 times %4")
                                 .arg(QLatin1String(row.fault), request)
                                 .arg(isPolled ? 3 : 12)
                                 .arg(row.times);
                unit.expected = expectationOf(row, isTcp, isFirst, isPolled);
                lines += startUnit(rig, unit, isTcp);
                units.push_back(std::move(unit));
            }
        }
        rig.writeUnits(lines);
        rig.startHost(isPolled ? QStringList(QStringLiteral("--poll")) : QStringList());
        QStringList awaited;
        QTRY_VERIFY2_WITH_TIMEOUT((awaited = readUnits(rig, units)).isEmpty(),
                                  qPrintable(awaited.join(QLatin1Char('\n'))), limitMs);
        QCOMPARE(rig.stopHost(), 0);
        const QByteArray wrong = judgeAll(rig, units);
        QVERIFY2(wrong.isEmpty(), wrong.constData());
    }

private:
    static QString startUnit(Rig& rig, const Unit& unit, bool isTcp)
    {
        // A line at its own pace, so that all of a dozen units' reports can be printed and read.
        const QString transport =
            isTcp ? QStringLiteral("--tcp 0") : QStringLiteral("--serial %1 --baud 38400").arg(unit.key);
        const int port = rig.startUnits(
            unit.key,
            words(transport + QStringLiteral(" --scenario restless --trace %1.trace --fault").arg(unit.key))
                << unit.fault);
        return QStringLiteral("[%1]\nretries=%2\ninterval=%3\n")
                   .arg(unit.key)
                   .arg(retries)
                   .arg(pollIntervalMs / 1000) +
               (isTcp ? QStringLiteral("commType=1\nipAddr=127.0.0.1\nport=%1\n").arg(port)
                      : QStringLiteral("portName=%1\n").arg(unit.key));
    }

    // Takes what the host has told. Returns the faults that are not over, or whose end may not have been told
    // yet.
    static QStringList readUnits(Rig& rig, std::vector<Unit>& units)
    {
        const QList<QJsonObject> events = rig.takeEvents();
        const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
        QStringList awaited;
        for (Unit& unit : units) {
            for (const QJsonObject& event : events) {
                if (event.value(QStringLiteral("unit")).toString() == unit.key)
                    unit.reports.append(reportOf(event, nowMs));
            }
            const Expectation& expected = unit.expected;
            if (!unit.overMs && contentOf(rig.path(unit.key + QStringLiteral(".trace"))).count("\"fault\"") >=
                                    expected.faults)
                unit.overMs = nowMs + expected.lengthMs + expected.failureMs + expected.pauseMs + timeoutMs;
            if (!unit.overMs || nowMs <= unit.overMs)
                awaited.append(unit.fault);
        }
        return awaited;
    }
};

QTEST_GUILESS_MAIN(tst_FaultMatrix)
#include "tst_faultmatrix.moc"
