#include "../journal/journalreading.h"
#include "alarmcourse.h"
#include "rig.h"

#include <QDateTime>
#include <QRandomGenerator>
#include <QtTest>

using namespace alarmcourse;

namespace {

const QString unitA = QStringLiteral("A");
constexpr int waitMs = 60000;
constexpr int keptWithinMs = 1000; // what is older when the host is killed must be in the journal
constexpr int longestRunMs = 4000; // from the first event

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
Span heardSpan(const QVector<Kept>& events, const Run& run)
{
    Span span{run.span.endMs, run.span.endMs - keptWithinMs};
    for (const Kept& event : events) {
        if (event.type == 1040)
            span.beginMs = event.atMs;
        else if (event.type == 1041)
            span.beginMs = run.span.endMs;
    }
    return span;
}

} // namespace

// The host is killed at random moments, again and again on the same journal, while every alarm of its unit
// comes and goes.
class HostCrashTest : public QObject
{
    Q_OBJECT

private slots:
    void journalAgreesWithTheUnit();

private:
    static Run runAndKill(Rig& rig, int round);
};

// By turns killed while it starts and some time after its first event.
Run HostCrashTest::runAndKill(Rig& rig, int round)
{
    Run run;
    run.span.beginMs = QDateTime::currentMSecsSinceEpoch();
    rig.startHost({});
    QList<QJsonObject> told;
    if (round % 2 == 0) {
        // In a function of its own: a failure returns nothing.
        [&] { QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(unitA, 2006), waitMs); }();
        QTest::qWait(round == 0 ? longestRunMs - keptWithinMs : randomMs(longestRunMs - keptWithinMs));
        told = rig.takeEvents();
        run.safeCount = linesOf(told).size();
        QTest::qWait(keptWithinMs); // what may be lost
    } else {
        QTest::qWait(randomMs(keptWithinMs));
    }
    run.span.endMs = QDateTime::currentMSecsSinceEpoch();
    rig.killHost();
    run.told = linesOf(told + rig.takeEvents());
    return run;
}

void HostCrashTest::journalAgreesWithTheUnit()
{
    Rig rig;
    rig.writeFile(QStringLiteral("alarms"), "0 random alarms 40 0.3\n");
    rig.startUnitA(
        {QStringLiteral("--serial"), QStringLiteral("ttyUPS"), QStringLiteral("--baud"), QStringLiteral("0")},
        QStringLiteral("portName=ttyUPS"), QStringLiteral("alarms"), {QStringLiteral("retries=1")});
    const QString file = rig.path(QStringLiteral("journal.sqlite"));
    QVector<Run> runs;
    for (int round = 0; round < ROUNDS; ++round) {
        runs << runAndKill(rig, round);
        // At once, as an export after the crash would read it: no writer has repaired anything yet.
        QCOMPARE(readColumn(file, QStringLiteral("PRAGMA integrity_check")),
                 QStringList(QStringLiteral("ok")));
    }

    const QVector<Kept> journal = journalled(file);
    QCOMPARE(misworded(journal), QString());
    const Course truth = truthOf(rig.trace(QStringLiteral("trace")));
    int checked = 0;
    int keptCount = 0;
    for (const Run& run : qAsConst(runs)) {
        const QVector<Kept> kept = within(journal, run.span);
        const QStringList lines = linesOf(kept);
        keptCount += lines.size();
        QVERIFY2(lines.size() >= run.safeCount,
                 qPrintable(QStringLiteral("%1 kept of %2").arg(lines.size()).arg(run.safeCount)));
        const int common = qMin(lines.size(), run.told.size());
        QCOMPARE(lines.mid(0, common), run.told.mid(0, common));
        QCOMPARE(disagreement(truth, kept, heardSpan(kept, run), {}, &checked), QString());
    }
    QCOMPARE(keptCount, journal.size()); // nothing is of a time at which no host ran
    QVERIFY2(checked > ROUNDS, qPrintable(QString::number(checked)));
}

QTEST_GUILESS_MAIN(HostCrashTest)
#include "tst_hostcrash.moc"
