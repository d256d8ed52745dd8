#include "columns.h"
#include "journalreading.h"
#include "rig.h"
#include "vek5font.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

constexpr int firstAlarmPoint = 2000;
constexpr int alarmCount = 498;
// A state that stays so long has been read by two queries and told, on a busy machine as well.
constexpr qint64 dwellMs = 1500;
constexpr qint64 recoveryMs = 6000; // from the end of a silence until the unit is heard again
constexpr int keptWithinMs = 1000;  // what is older when the host is killed must be in the journal
constexpr int longestRunMs = 4000;  // from the first event

struct Transition
{
    qint64 atMs;
    int state;
};
using Course = QMap<int, QVector<Transition>>; // by alarm index, in the order of time

struct Span
{
    qint64 beginMs = 0;
    qint64 endMs = 0;
};

// One row of the journal's events.
struct Event
{
    qint64 atMs;
    int type;
    int code;
    int state;
    QString text;
};

int alarmOf(const QJsonObject& event, const char* key)
{
    return recordOf(event).value(QLatin1String(key)).toInt();
}

QString lineOf(int type, int code, int state)
{
    return type == AlarmChanged ? QStringLiteral("%1 %2 %3").arg(type).arg(code).arg(state)
                                : QString::number(type);
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
        const auto count = std::count_if(told.begin(), told.end(), [&](const Transition& event) {
            return event.state == change.state && event.atMs >= change.atMs &&
                   event.atMs <= change.atMs + dwellMs;
        });
        if (count != 1)
            return QStringLiteral("state %1 of %2 told %3 times")
                .arg(change.state)
                .arg(change.atMs)
                .arg(count);
        ++*checked;
    }
    return {};
}

// What each alarm truly did, from the simulator's trace.
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

// From the first to the last fault of the trace.
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

// The journal's events of a span of time in their order, read as another program would.
QVector<Event> journalled(const QString& file, const Span& span = {0, std::numeric_limits<qint64>::max()})
{
    QVector<Event> journal;
    for (const QVariantList& row :
         readRows(file, "SELECT time_ms, type, code, state, text FROM event ORDER BY id")) {
        const qint64 atMs = row.value(0).toLongLong();
        if (atMs >= span.beginMs && atMs <= span.endMs)
            journal << Event{atMs, row.value(1).toInt(), row.value(2).toInt(), row.value(3).toInt(),
                             row.value(4).toString()};
    }
    return journal;
}

// One line for each event that belongs into a journal, to compare what was told with what was kept.
QStringList linesOf(const QVector<Event>& journal)
{
    QStringList lines;
    for (const Event& event : journal)
        lines << lineOf(event.type, event.code, event.state);
    return lines;
}

QStringList linesOf(const QList<QJsonObject>& events)
{
    QStringList lines;
    for (const QJsonObject& event : events) {
        if (typeOf(event) != Data && typeOf(event) != Echo)
            lines << lineOf(typeOf(event), alarmOf(event, "alarmId"), alarmOf(event, "alarmState"));
    }
    return lines;
}

// The codes of the alarm changes of each report: a report ends with its data event.
QVector<QVector<int>> reportsOf(const QList<QJsonObject>& events)
{
    QVector<QVector<int>> reports(1);
    for (const QJsonObject& event : events) {
        if (typeOf(event) == AlarmChanged)
            reports.last() << alarmOf(event, "alarmId");
        else if (typeOf(event) == Data)
            reports << QVector<int>();
    }
    return reports;
}

// Judgements name the first thing that is wrong; they are empty when nothing is.

// Each event has the text of its code and the code of its half, and nothing else is kept with the alarms.
QString misworded(const QVector<Event>& journal)
{
    const QStringList texts = vek5Font::instance()->getEventLogDesc();
    const QVector<int> others{Restored, Lost, StatusPoint2368, StatusPoint2022};
    for (const Event& event : journal) {
        const bool isRight = event.type == AlarmChanged ? event.text == texts.value(event.code) &&
                                                              (event.code < alarmCount) == (event.state == 1)
                                                        : others.contains(event.type);
        if (!isRight)
            return lineOf(event.type, event.code, event.state) + QLatin1String(": ") + event.text;
    }
    return {};
}

// Of one run of a host: appearances and clearings take turns, each tells a state that the unit held shortly
// before, and each state that stayed long enough while the unit was heard, and not about the time of the
// silence, was told exactly once. `checked` counts these.
QString disagreement(const Course& truth, const QVector<Event>& run, const Span& heard, const Span& silence,
                     int* checked)
{
    Course told;
    for (const Event& event : run) {
        if (event.type == AlarmChanged)
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

// One alarm changes at each step of the unit, one every 1.6 s; later all appear and clear at one step.
QByteArray flappingThenAllAtOnce()
{
    QByteArray text;
    for (int tenth = 10; tenth < 90; ++tenth) {
        text += QByteArray::number(tenth / 10.0) + " alarm 5 " + (tenth % 2 ? "off\n" : "on\n");
        if (tenth % 16 == 0)
            text += "+0 alarm 6 " + QByteArray(tenth % 32 ? "off\n" : "on\n");
    }
    for (const char* action : {"11 alarm %1 on\n", "13 alarm %1 off\n"}) {
        for (int index = 0; index < alarmCount; ++index)
            text += QString::fromLatin1(action).arg(index).toLatin1();
    }
    return text;
}

QVector<int> countedFrom(int first)
{
    QVector<int> codes(alarmCount);
    std::iota(codes.begin(), codes.end(), first);
    return codes;
}

int randomMs(int limit)
{
    return QRandomGenerator::global()->bounded(limit);
}

struct Run
{
    Span span;         // from the start to the kill
    QStringList told;  // all that was read of it
    int safeCount = 0; // so many of them were told long enough before the kill
};

// When a run's host heard the unit for good, up to the last moment of which all must be kept.
Span heardSpan(const QVector<Event>& events, const Run& run)
{
    Span span{run.span.endMs, run.span.endMs - keptWithinMs};
    for (const Event& event : events) {
        if (event.type == Restored)
            span.beginMs = event.atMs;
        else if (event.type == Lost)
            span.beginMs = run.span.endMs;
    }
    return span;
}

} // namespace

// What a host tells of its unit's alarms and what its journal keeps, held against what the unit truly did.
class tst_Alarms : public QObject
{
    Q_OBJECT

private slots:
    void alarms_data() { Rig::addTransportRows(); }
    // Every alarm at random, a loss in between.
    void alarms()
    {
        QFETCH(QString, transport);
        QFETCH(QString, config);
        Rig rig;
        // A round, in which every alarm comes and goes, takes 21 s; the silence falls into the first.
        rig.write("alarms", "0 random alarms 120 2.5\n16 fault no-answer for 5\n");
        rig.write("serial.ini", "[ttyUPS]\ntimeout=300\n");
        rig.startUnitA(transport, config, "alarms", "retries=2");
        rig.startHost({QStringLiteral("--seconds"), QStringLiteral("60")});
        QCOMPARE(rig.waitForHost(120000), 0);
        QCOMPARE(rig.events("A", Lost).size(), 1);
        QCOMPARE(rig.events("A", Restored).size(), 2);

        judge(rig, rig.takeEvents());
    }

    void flappingAndAllAtOnce()
    {
        Rig rig;
        rig.write("alarms", flappingThenAllAtOnce());
        rig.startSerialUnitA("alarms");
        rig.startHost({QStringLiteral("--seconds"), QStringLiteral("14")});
        QCOMPARE(rig.waitForHost(waitMs), 0);

        const QList<QJsonObject> events = rig.takeEvents();
        QCOMPARE(reportsOf(events).count(countedFrom(0)), 1);
        QCOMPARE(reportsOf(events).count(countedFrom(alarmCount)), 1);
        judge(rig, events);
    }

    void hostIsKilled_data()
    {
        const auto row = columns<int>("rounds");
        row("5 times", 5);
        row("50 times", 50);
    }
    // At random moments, again and again on the same journal, while every alarm of the unit comes and goes.
    void hostIsKilled()
    {
        QFETCH(int, rounds);
        Rig rig;
        rig.write("alarms", "0 random alarms 40 0.3\n");
        rig.startSerialUnitA("alarms", "retries=1");
        const QString file = rig.path("journal.sqlite");
        QVector<Run> runs;
        for (int round = 0; round < rounds; ++round) {
            runs << runAndKill(rig, round);
            // At once, as an export after the crash would read it: no writer has repaired anything yet.
            QCOMPARE(readColumn(file, "PRAGMA integrity_check"), QByteArrayList{"ok"});
        }
        // Only the last period can be open; the others ended with a crash or a loss, when it happened.
        QVERIFY(readColumn(file, "SELECT unit FROM period WHERE ending IS NULL").size() <= 1);
        QCOMPARE(readColumn(file, "SELECT count(*) FROM period WHERE ending NOT IN ('interrupted', 'lost') "
                                  "OR to_ms < from_ms OR to_ms - from_ms > 10000"),
                 QByteArrayList{"0"});

        const QVector<Event> journal = journalled(file);
        QCOMPARE(misworded(journal), QString());
        const Course truth = truthOf(rig.trace("trace"));
        int checked = 0;
        int keptCount = 0;
        for (const Run& run : qAsConst(runs)) {
            const QVector<Event> kept = journalled(file, run.span);
            const QStringList lines = linesOf(kept);
            keptCount += lines.size();
            QVERIFY2(lines.size() >= run.safeCount,
                     qPrintable(QStringLiteral("%1 kept of %2").arg(lines.size()).arg(run.safeCount)));
            const int common = qMin(lines.size(), run.told.size());
            QCOMPARE(lines.mid(0, common), run.told.mid(0, common));
            QCOMPARE(disagreement(truth, kept, heardSpan(kept, run), {}, &checked), QString());
        }
        QCOMPARE(keptCount, journal.size()); // nothing is of a time at which no host ran
        QVERIFY2(checked > rounds, qPrintable(QString::number(checked)));
    }

private:
    static void judge(const Rig& rig, const QList<QJsonObject>& events)
    {
        const QVector<Event> kept = journalled(rig.path("journal.sqlite"));
        const QList<QJsonObject> trace = rig.trace("trace");
        QCOMPARE(linesOf(kept), linesOf(events));
        QCOMPARE(misworded(kept), QString());
        int checked = 0;
        const Span heard{kept.constFirst().atMs, kept.constLast().atMs};
        QCOMPARE(disagreement(truthOf(trace), kept, heard, faultsOf(trace), &checked), QString());
        QVERIFY2(checked > alarmCount, qPrintable(QString::number(checked)));
    }

    // By turns killed while it starts and some time after its first event.
    static Run runAndKill(Rig& rig, int round)
    {
        Run run;
        run.span.beginMs = QDateTime::currentMSecsSinceEpoch();
        rig.startHost({});
        QList<QJsonObject> events;
        if (round % 2 == 0) {
            // In a function of its own: a failure returns nothing.
            [&] { QTRY_VERIFY_WITH_TIMEOUT(!rig.events("A", AlarmChanged).isEmpty(), waitMs); }();
            QTest::qWait(round == 0 ? longestRunMs - keptWithinMs : randomMs(longestRunMs - keptWithinMs));
            events = rig.takeEvents();
            run.safeCount = linesOf(events).size();
            QTest::qWait(keptWithinMs); // what may be lost
        } else {
            QTest::qWait(randomMs(keptWithinMs));
        }
        run.span.endMs = QDateTime::currentMSecsSinceEpoch();
        rig.killHost();
        run.told = linesOf(events + rig.takeEvents());
        return run;
    }
};

QTEST_GUILESS_MAIN(tst_Alarms)
#include "tst_alarms.moc"
