#include "alarmcourse.h"
#include "rig.h"

#include <QtTest>

#include <numeric>

using namespace alarmcourse;

namespace {

const QString unitA = QStringLiteral("A");
constexpr int waitMs = 60000;

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

} // namespace

// What the host tells and the journal keeps against what the unit truly did.
class tst_Truth : public QObject
{
    Q_OBJECT

private slots:
    void alarms_data();
    void alarms();
    void flappingAndAllAtOnce();
};

void tst_Truth::alarms_data()
{
    Rig::addTransportRows();
}

// Every alarm at random, a loss in between.
void tst_Truth::alarms()
{
    QFETCH(QStringList, transport);
    QFETCH(QString, config);
    Rig rig;
    // A round, in which every alarm comes and goes, takes 21 s; the silence falls into the first.
    rig.writeFile(QStringLiteral("alarms"), "0 random alarms 120 2.5\n16 fault no-answer for 5\n");
    rig.writeFile(QStringLiteral("serial.ini"), "[ttyUPS]\ntimeout=300\n");
    rig.startUnitA(transport, config, QStringLiteral("alarms"), {QStringLiteral("retries=2")});
    rig.startHost({QStringLiteral("--seconds"), QStringLiteral("60")});
    QCOMPARE(rig.waitForHost(120000), 0);
    QCOMPARE(rig.events(unitA, 1041).size(), 1);
    QCOMPARE(rig.events(unitA, 1040).size(), 2);

    const QList<QJsonObject> told = rig.takeEvents();
    const QVector<Kept> kept = journalled(rig.path(QStringLiteral("journal.sqlite")));
    const QList<QJsonObject> trace = rig.trace(QStringLiteral("trace"));
    const Span silence = faultsOf(trace);
    QVERIFY(silence.endMs > silence.beginMs);
    QCOMPARE(linesOf(kept), linesOf(told));
    QCOMPARE(disorder(reportsOf(told)), QString());
    QCOMPARE(misworded(kept), QString());
    int checked = 0;
    QCOMPARE(disagreement(truthOf(trace), kept, {kept.constFirst().atMs, kept.constLast().atMs}, silence,
                          &checked),
             QString());
    QVERIFY2(checked > alarmCount, qPrintable(QString::number(checked)));
}

void tst_Truth::flappingAndAllAtOnce()
{
    Rig rig;
    rig.writeFile(QStringLiteral("alarms"), flappingThenAllAtOnce());
    rig.startUnitA(
        {QStringLiteral("--serial"), QStringLiteral("ttyUPS"), QStringLiteral("--baud"), QStringLiteral("0")},
        QStringLiteral("portName=ttyUPS"), QStringLiteral("alarms"));
    rig.startHost({QStringLiteral("--seconds"), QStringLiteral("14")});
    QCOMPARE(rig.waitForHost(waitMs), 0);

    const QList<QJsonObject> told = rig.takeEvents();
    const QVector<Kept> kept = journalled(rig.path(QStringLiteral("journal.sqlite")));
    const QVector<QVector<int>> reports = reportsOf(told);
    QCOMPARE(reports.count(countedFrom(0)), 1);
    QCOMPARE(reports.count(countedFrom(alarmCount)), 1);
    QCOMPARE(linesOf(kept), linesOf(told));
    QCOMPARE(disorder(reports), QString());
    QCOMPARE(misworded(kept), QString());
    int checked = 0;
    QCOMPARE(disagreement(truthOf(rig.trace(QStringLiteral("trace"))), kept,
                          {kept.constFirst().atMs, kept.constLast().atMs}, {}, &checked),
             QString());
    QVERIFY2(checked > alarmCount, qPrintable(QString::number(checked)));
}

QTEST_GUILESS_MAIN(tst_Truth)
#include "tst_truth.moc"
