#include "rig.h"

#include <QtTest>

namespace {

const QString unitA = QStringLiteral("UPS-A");
const QString unitB = QStringLiteral("UPS-B");
const QString unitC = QStringLiteral("UPS-C");

enum Event
{
    Restored = 1040,
    Lost = 1041,
    AlarmChanged = 2006,
    Data = 2007
};

constexpr int waitMs = 60000; // generous: sanitizers, two cores, other tests

double point(const QJsonObject& record, int id)
{
    return record.value(QStringLiteral("data")).toObject().value(QString::number(id)).toDouble(-1);
}

const QStringList serialArguments{QStringLiteral("--serial"),  QStringLiteral("ttyUPS"),
                                  QStringLiteral("--baud"),    QStringLiteral("0"),
                                  QStringLiteral("--address"), QStringLiteral("1"),
                                  QStringLiteral("--address"), QStringLiteral("2"),
                                  QStringLiteral("--trace"),   QStringLiteral("serial.trace")};

// The last data map that a unit's events carry.
QJsonObject lastData(Rig& rig, const QString& unit)
{
    const QList<QJsonObject> records = rig.events(unit, Data);
    return records.isEmpty() ? QJsonObject() : records.constLast();
}

// Two units on one line and one over TCP, as the demo has them but without the pace of a real line.
// Returns the TCP port.
QString startAll(Rig& rig)
{
    rig.startUnits(QStringLiteral("serial"), serialArguments);
    const QString ready =
        rig.startUnits(QStringLiteral("tcp"), {QStringLiteral("--tcp"), QStringLiteral("0")});
    const QString port = ready.mid(ready.lastIndexOf(QLatin1Char(':')) + 1);
    rig.writeFile(QStringLiteral("serial.ini"), "[ttyUPS]\nparam=\"9600,n,8,1\"\ntimeout=500\n");
    rig.writeUnits({QStringLiteral("[UPS-A]"), QStringLiteral("portName=ttyUPS"), QStringLiteral("addr=1"),
                    QStringLiteral("interval=1"), QStringLiteral("[UPS-B]"),
                    QStringLiteral("portName=ttyUPS"), QStringLiteral("addr=2"), QStringLiteral("interval=1"),
                    QStringLiteral("[UPS-C]"), QStringLiteral("commType=1"),
                    QStringLiteral("ipAddr=127.0.0.1"), QStringLiteral("retries=2"),
                    QStringLiteral("interval=1"), QString(QStringLiteral("port=") + port)});
    return port;
}

} // namespace

// The built plugin in the built host with the built driver, against simulated units.
class tst_EndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void threeUnits_data();
    void threeUnits();
    void commandsReachTheUnit();
    void everyCommandOnceInOrder_data();
    void everyCommandOnceInOrder();
    void lossAndRecovery_data();
    void lossAndRecovery();
    void silentUnitsGiveExitCode();
};

void tst_EndToEnd::threeUnits_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("threads of their own") << QStringList();
    QTest::newRow("polled by the host") << QStringList(QStringLiteral("--poll"));
}

void tst_EndToEnd::threeUnits()
{
    QFETCH(QStringList, options);
    Rig rig;
    startAll(rig);
    rig.startHost(options);
    for (const QString& unit : {unitA, unitB, unitC}) {
        QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(unit, Restored), waitMs);
        QTRY_VERIFY_WITH_TIMEOUT(point(lastData(rig, unit), 4163) > 0, waitMs);
        const QJsonObject data = lastData(rig, unit);
        QCOMPARE(data.value(QStringLiteral("data")).toObject().size(), 512 + 276 + 164);
        for (int phase = 0; phase < 3; ++phase)
            QVERIFY(point(data, 4163 + phase) > 200 && point(data, 4163 + phase) < 260);
        QVERIFY(point(data, 4104) < -100); // the minus side brings its sign over the wire
        QVERIFY(rig.events(unit, Lost).isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(unit, AlarmChanged), waitMs);
    }
    QCOMPARE(rig.stopHost(), 0);
}

void tst_EndToEnd::commandsReachTheUnit()
{
    Rig rig;
    startAll(rig);
    rig.startHost({QStringLiteral("--control"), QStringLiteral("UPS-A,1009,"), QStringLiteral("--control"),
                   QStringLiteral("UPS-B,2016,3017,40"), QStringLiteral("--control"),
                   QStringLiteral("UPS-C,2016,3087,Nordlicht")});
    QTRY_VERIFY_WITH_TIMEOUT(qFuzzyCompare(point(lastData(rig, unitB), 3017), 40.0), waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(qFuzzyCompare(point(lastData(rig, unitC), 3087), double('N')), waitMs);
    QCOMPARE(rig.stopHost(), 0);
    int buzzerCommands = 0;
    for (const QJsonObject& line : rig.trace(QStringLiteral("serial.trace"))) {
        if (line.value(QStringLiteral("command")).toInt(-1) == 17) {
            ++buzzerCommands;
            QCOMPARE(line.value(QStringLiteral("address")).toInt(), 1);
        }
    }
    QCOMPARE(buzzerCommands, 1);
}

void tst_EndToEnd::everyCommandOnceInOrder_data()
{
    Rig::addTransportRows();
}

void tst_EndToEnd::everyCommandOnceInOrder()
{
    QFETCH(QStringList, transport);
    QFETCH(QString, config);
    Rig rig;
    rig.startUnitA(transport, config, QStringLiteral("none"));
    // In an order in which the unit accepts each; 1011 and 7 are no commands, 1018 leaves the rest to the
    // next cycle, and the text of the last one is cut.
    const QStringList commands{QStringLiteral("1009,"),
                               QStringLiteral("1010,"),
                               QStringLiteral("1001,"),
                               QStringLiteral("1011,x"),
                               QStringLiteral("1003,"),
                               QStringLiteral("1006,"),
                               QStringLiteral("1004,10"),
                               QStringLiteral("1018,"),
                               QStringLiteral("1005,"),
                               QStringLiteral("1006,"),
                               QStringLiteral("1016,"),
                               QStringLiteral("1017,"),
                               QStringLiteral("7,1"),
                               QStringLiteral("1015,"),
                               QStringLiteral("1008,"),
                               QStringLiteral("1007,"),
                               QStringLiteral("1013,"),
                               QStringLiteral("1002,"),
                               QString(QStringLiteral("1045,") + QString(60, QLatin1Char('h')))};
    QStringList arguments;
    for (const QString& command : commands)
        arguments << QStringLiteral("--control") << QString(QStringLiteral("A,") + command);
    rig.startHost(arguments);
    QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(QStringLiteral("A"), 1042), waitMs);
    QCOMPARE(rig.stopHost(), 0);
    QStringList seen;
    for (const QJsonObject& line : rig.trace(QStringLiteral("trace"))) {
        if (line.contains(QStringLiteral("command")))
            seen << QStringLiteral("%1:%2")
                        .arg(line.value(QStringLiteral("command")).toInt())
                        .arg(line.value(QStringLiteral("argument")).toInt(-1));
    }
    QCOMPARE(seen.join(QLatin1Char(' ')),
             QStringLiteral(
                 "17:-1 18:-1 12:-1 0:-1 3:-1 0:10 2:-1 3:-1 10:-1 11:-1 9:-1 7:-1 4:-1 7:-1 13:-1 20:-1"));
    QVERIFY(QFile::exists(rig.path(QString(60, QLatin1Char('h')))));
}

void tst_EndToEnd::lossAndRecovery_data()
{
    QTest::addColumn<QString>("unit");
    QTest::addColumn<QString>("key");
    QTest::newRow("serial line") << unitA << QStringLiteral("serial");
    QTest::newRow("TCP") << unitC << QStringLiteral("tcp");
}

void tst_EndToEnd::lossAndRecovery()
{
    QFETCH(QString, unit);
    QFETCH(QString, key);
    Rig rig;
    const QString port = startAll(rig);
    QVERIFY(port.toInt() > 0);
    rig.startHost({QStringLiteral("--units"), unit});
    QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(unit, Restored), waitMs);
    rig.forget();
    rig.killUnits(key);
    QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(unit, Lost), waitMs);
    if (key == QLatin1String("serial"))
        rig.startUnits(key, serialArguments);
    else
        rig.startUnits(key, {QStringLiteral("--tcp"), port});
    QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(unit, Restored), waitMs);
    QCOMPARE(rig.events(unit, Lost).size(), 1);
    QCOMPARE(rig.events(unit, Restored).size(), 1);
    QCOMPARE(rig.stopHost(), 0);
}

void tst_EndToEnd::silentUnitsGiveExitCode()
{
    Rig rig;
    startAll(rig);
    rig.killUnits(QStringLiteral("serial"));
    rig.startHost({QStringLiteral("--seconds"), QStringLiteral("3"), QStringLiteral("--units"), unitA});
    QCOMPARE(rig.waitForHost(waitMs), 3);
    rig.startHost({QStringLiteral("--units"), QStringLiteral("nobody")});
    QCOMPARE(rig.waitForHost(waitMs), 2);
}

QTEST_GUILESS_MAIN(tst_EndToEnd)
#include "tst_endtoend.moc"
