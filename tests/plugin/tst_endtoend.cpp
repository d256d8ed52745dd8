#include "rig.h"

#include <QTcpSocket>
#include <QtEndian>
#include <QtTest>

namespace {

const QString unitA = QStringLiteral("UPS-A");
const QString unitB = QStringLiteral("UPS-B");
const QString unitC = QStringLiteral("UPS-C");

enum Event
{
    Restored = 1040,
    Lost = 1041,
    Downloaded = 1042,
    AlarmChanged = 2006,
    Data = 2007
};

constexpr int downloads = 60;
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

// The commands that a unit carried out, each as code:argument.
QString commandsIn(const QList<QJsonObject>& trace)
{
    QStringList seen;
    for (const QJsonObject& line : trace) {
        if (line.contains(QStringLiteral("command")))
            seen << QStringLiteral("%1:%2")
                        .arg(line.value(QStringLiteral("command")).toInt())
                        .arg(line.value(QStringLiteral("argument")).toInt(-1));
    }
    return seen.join(QLatin1Char(' '));
}

QStringList controls(const QStringList& commands)
{
    QStringList arguments;
    for (const QString& command : commands)
        arguments << QStringLiteral("--control") << command;
    return arguments;
}

QByteArray contentOf(const QString& file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(no file)");
}

// Input registers of unit 1 over Modbus TCP, without driver and plugin.
QVector<int> registersOf(QTcpSocket& socket, int first, int count)
{
    char request[] = {0, 1, 0, 0, 0, 6, 1, 4, 0, 0, 0, 0};
    qToBigEndian(static_cast<quint16>(first), request + 8);
    qToBigEndian(static_cast<quint16>(count), request + 10);
    socket.write(request, sizeof request);
    const int headLength = 9;
    while (socket.bytesAvailable() < headLength + 2 * count && socket.waitForReadyRead(waitMs)) {
    }
    const QByteArray reply = socket.readAll().mid(headLength);
    QVector<int> values;
    for (int i = 0; i + 1 < reply.size(); i += 2)
        values << qFromBigEndian<quint16>(reply.constData() + i);
    return values;
}

// What an export of the history that a unit holds now has to be.
QByteArray expectedExport(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    QByteArray text = "ID,Content,Status,Time,\n";
    const int count = socket.waitForConnected(waitMs) ? registersOf(socket, 0x2000, 1).value(0) : 0;
    for (int i = 0; i < count; ++i) {
        const QVector<int> r = registersOf(socket, 0x2008 + 8 * i, 8);
        text += QString::asprintf("%d,%d,%s,20%02d-%02d-%02d %02d:%02d:%02d,\n", r.value(0), r.value(0),
                                  r.value(1) == 1 ? "Appear" : "Disappear", r.value(2), r.value(3),
                                  r.value(4), r.value(5), r.value(6), r.value(7))
                    .toLatin1();
    }
    return text;
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
    void commandsOfALostUnit_data();
    void commandsOfALostUnit();
    void twoHistoriesAtOnce();
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
    // Lost at first: the host holds the commands back.
    rig.startUnitA(transport + QStringList{QStringLiteral("--fault"), QStringLiteral("no-answer times 4")},
                   config, QStringLiteral("none"), {QStringLiteral("retries=1")});
    // In an order in which the unit accepts each; 1011 and 7 are no commands, 1018 leaves the rest to the
    // next cycle, and the text of the last one is cut.
    const QStringList commands{QStringLiteral("A,1009,"),
                               QStringLiteral("A,1010,"),
                               QStringLiteral("A,1001,"),
                               QStringLiteral("A,1011,x"),
                               QStringLiteral("A,1003,"),
                               QStringLiteral("A,1006,"),
                               QStringLiteral("A,1004,10"),
                               QStringLiteral("A,1018,"),
                               QStringLiteral("A,1005,"),
                               QStringLiteral("A,1006,"),
                               QStringLiteral("A,1016,"),
                               QStringLiteral("A,1017,"),
                               QStringLiteral("A,7,1"),
                               QStringLiteral("A,1015,"),
                               QStringLiteral("A,1008,"),
                               QStringLiteral("A,1007,"),
                               QStringLiteral("A,1013,"),
                               QStringLiteral("A,1002,"),
                               QString(QStringLiteral("A,1045,") + QString(60, QLatin1Char('h')))};
    rig.startHost(controls(commands));
    QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(QStringLiteral("A"), Downloaded), waitMs);
    QCOMPARE(rig.events(QStringLiteral("A"), Lost).size(), 1);
    QCOMPARE(rig.stopHost(), 0);
    QCOMPARE(commandsIn(rig.trace(QStringLiteral("trace"))),
             QStringLiteral(
                 "17:-1 18:-1 12:-1 0:-1 3:-1 0:10 2:-1 3:-1 10:-1 11:-1 9:-1 7:-1 4:-1 7:-1 13:-1 20:-1"));
    QVERIFY(QFile::exists(rig.path(QString(60, QLatin1Char('h')))));
}

void tst_EndToEnd::commandsOfALostUnit_data()
{
    Rig::addTransportRows();
}

// The first command ends its run, so that the others wait while the next query finds the unit gone. Over TCP
// they go on waiting for the connection. On a line they are tried once and never again: a command that comes
// when nobody expects it any more would do harm.
void tst_EndToEnd::commandsOfALostUnit()
{
    QFETCH(QStringList, transport);
    QFETCH(QString, config);
    const QString unit = QStringLiteral("A");
    const bool isTcp = transport.contains(QStringLiteral("--tcp"));
    Rig rig;
    rig.startUnitA(
        transport + QStringList{QStringLiteral("--fault"), QStringLiteral("refused 4 function 2 request 2")},
        config, QStringLiteral("none"), {QStringLiteral("retries=1")});
    rig.startHost(controls({QStringLiteral("A,1018,"), QStringLiteral("A,1009,"),
                            QStringLiteral("A,1045,history.csv"), QStringLiteral("A,1010,")}));
    QTRY_VERIFY_WITH_TIMEOUT(rig.hasEvent(unit, Downloaded), waitMs);
    QCOMPARE(rig.events(unit, Downloaded).constFirst().value(QStringLiteral("desc")).toString(),
             isTcp ? QStringLiteral("A Download history successful")
                   : QStringLiteral("A Download history failed"));
    QTRY_VERIFY_WITH_TIMEOUT(rig.events(unit, Restored).size() == 2, waitMs);
    rig.forget();
    QTRY_VERIFY_WITH_TIMEOUT(rig.events(unit, Data).size() >= 2,
                             waitMs); // whatever waited would be sent by now
    QCOMPARE(rig.stopHost(), 0);
    QCOMPARE(commandsIn(rig.trace(QStringLiteral("trace"))),
             isTcp ? QStringLiteral("17:-1 20:-1 18:-1") : QString());
    QCOMPARE(contentOf(rig.path(QStringLiteral("history.csv"))).count('\n') > 1, isTcp);
}

// Both units have so much to tell that their downloads meet, again and again.
void tst_EndToEnd::twoHistoriesAtOnce()
{
    Rig rig;
    rig.writeFile(QStringLiteral("alarms"), "0 random alarms 150 0.1\n0.3 random alarms off\n");
    QMap<QString, quint16> tcpPorts; // the test's own way to what a unit holds
    for (const QString& unit : {QStringLiteral("A"), QStringLiteral("B")}) {
        const QString ready = rig.startUnits(
            unit, {QStringLiteral("--tcp"), QStringLiteral("0"), QStringLiteral("--serial"),
                   QString(QStringLiteral("tty") + unit), QStringLiteral("--baud"), QStringLiteral("0"),
                   QStringLiteral("--scenario"), QStringLiteral("alarms"), QStringLiteral("--trace"), unit,
                   QStringLiteral("--seed"), QString::number(tcpPorts.size())});
        tcpPorts.insert(unit, static_cast<quint16>(ready.section(QLatin1Char(':'), -1).toInt()));
        QTRY_VERIFY(contentOf(rig.path(unit)).contains("random alarms off"));
    }
    rig.writeUnits({QStringLiteral("[A]"), QStringLiteral("portName=ttyA"), QStringLiteral("[B]"),
                    QStringLiteral("portName=ttyB")});
    QStringList commands;
    for (const QString& unit : {QStringLiteral("A"), QStringLiteral("B")}) {
        for (int i = 0; i < downloads; ++i)
            commands << QStringLiteral("%1,1045,%1%2.csv").arg(unit).arg(i);
        rig.writeFile(QString(unit + QStringLiteral("0.csv")), QByteArray(200000, 'x')); // to be replaced
    }
    // Nobody can write below a file, not even a superuser.
    commands << QStringLiteral("B,1045,dev.ini/history.csv");
    rig.writeFile(QStringLiteral("dev.ini"), {});
    rig.startHost(controls(commands) + QStringList(QStringLiteral("--verbose")));
    QTRY_COMPARE_WITH_TIMEOUT(rig.events(QStringLiteral("A"), Downloaded).size(), downloads, waitMs);
    QTRY_COMPARE_WITH_TIMEOUT(rig.events(QStringLiteral("B"), Downloaded).size(), downloads + 1, waitMs);
    QCOMPARE(rig.stopHost(), 0);

    const QByteArray expectedA = expectedExport(tcpPorts.value(QStringLiteral("A")));
    const QByteArray expectedB = expectedExport(tcpPorts.value(QStringLiteral("B")));
    QVERIFY(expectedA.count('\n') > 300 && expectedB.count('\n') > 300 && expectedA != expectedB);
    for (int i = 0; i < downloads; ++i) {
        QVERIFY(contentOf(rig.path(QStringLiteral("A%1.csv").arg(i))) == expectedA);
        QVERIFY(contentOf(rig.path(QStringLiteral("B%1.csv").arg(i))) == expectedB);
    }
    QCOMPARE(contentOf(rig.path(QStringLiteral("history.txt"))), QByteArray());
    QVERIFY(rig.hostErrors().contains("history: cannot write dev.ini/history.csv: "));
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
