#include "columns.h"
#include "rig.h"
#include "testfiles.h"

#include <QTcpSocket>
#include <QtEndian>

namespace {

const QString unitA = QStringLiteral("A");
const QString unitB = QStringLiteral("B");
const QString unitC = QStringLiteral("C");

constexpr int downloads = 60;

// A point of the last data map that a unit's events carry; -1 for none.
double point(Rig& rig, const QString& unit, int id)
{
    const QJsonObject record = rig.events(unit, Data).value(rig.events(unit, Data).size() - 1);
    return record.value(QStringLiteral("data")).toObject().value(QString::number(id)).toDouble(-1);
}

// The commands that the units carried out, each as address/code:argument.
QString commandsIn(const QList<QJsonObject>& trace)
{
    QStringList seen;
    for (const QJsonObject& line : trace) {
        if (line.contains(QStringLiteral("command")))
            seen << QStringLiteral("%1/%2:%3")
                        .arg(line.value(QStringLiteral("address")).toInt())
                        .arg(line.value(QStringLiteral("command")).toInt())
                        .arg(line.value(QStringLiteral("argument")).toInt(-1));
    }
    return seen.join(QLatin1Char(' '));
}

// Commands as words, each UNIT,ID,VALUE.
QStringList controls(const Text& commands)
{
    QStringList arguments;
    for (const QString& command : words(commands))
        arguments << QStringLiteral("--control") << command;
    return arguments;
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
QByteArray expectedExport(int port)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), static_cast<quint16>(port));
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
    void threeUnits_data()
    {
        const auto row = columns<QString>("options");
        row("threads of their own", "");
        row("polled by the host", "--poll");
    }
    // Two units on one line and one over TCP, as the demo has them but without the pace of a real line.
    void threeUnits()
    {
        QFETCH(QString, options);
        Rig rig;
        rig.write("soon", "1 alarm 5 on\n");
        rig.startUnits(unitA, words("--serial ttyUPS --baud 0 --address 1 --address 2 --scenario soon "
                                    "--trace trace"));
        const int port = rig.startUnits(unitC, words("--tcp 0 --scenario soon"));
        rig.write("serial.ini", "[ttyUPS]\nparam=\"9600,n,8,1\"\ntimeout=500\n");
        rig.writeUnits(QStringLiteral("[A]\nportName=ttyUPS\naddr=1\ninterval=1\n"
                                      "[B]\nportName=ttyUPS\naddr=2\ninterval=1\n"
                                      "[C]\ncommType=1\nipAddr=127.0.0.1\ninterval=1\nport=%1\n")
                           .arg(port));
        rig.startHost(controls("A,1009, B,2016,3017,40 C,2016,3087,Nordlicht") + words(options));
        for (const QString& unit : {unitA, unitB, unitC}) {
            QTRY_VERIFY_WITH_TIMEOUT(!rig.events(unit, Restored).isEmpty(), waitMs);
            QTRY_VERIFY_WITH_TIMEOUT(point(rig, unit, 4163) > 0, waitMs);
            QCOMPARE(rig.events(unit, Data).constLast().value(QStringLiteral("data")).toObject().size(),
                     512 + 276 + 164);
            for (int phase = 4163; phase < 4166; ++phase)
                QVERIFY(point(rig, unit, phase) > 200 && point(rig, unit, phase) < 260);
            QVERIFY(point(rig, unit, 4104) < -100); // the minus side brings its sign over the wire
            QVERIFY(rig.events(unit, Lost).isEmpty());
            QTRY_VERIFY_WITH_TIMEOUT(!rig.events(unit, AlarmChanged).isEmpty(), waitMs);
        }
        QTRY_COMPARE_WITH_TIMEOUT(point(rig, unitB, 3017), 40.0, waitMs);
        QTRY_COMPARE_WITH_TIMEOUT(point(rig, unitC, 3087), double('N'), waitMs);
        QCOMPARE(rig.stopHost(), 0);
        QCOMPARE(commandsIn(rig.trace("trace")), QStringLiteral("1/17:-1"));
    }

    void everyCommandOnceInOrder_data() { Rig::addTransportRows(); }
    void everyCommandOnceInOrder()
    {
        QFETCH(QString, transport);
        QFETCH(QString, config);
        Rig rig;
        // Lost at first: the host holds the commands back.
        rig.startUnitA(transport, config, "none", "retries=1",
                       {QStringLiteral("--fault"), QStringLiteral("no-answer times 1")});
        // In an order in which the unit accepts each; 1011 and 7 are no commands, 1018 leaves the rest to the
        // next cycle, and the text of the last one is cut.
        const QString longName(60, QLatin1Char('h'));
        rig.startHost(
            controls(QStringLiteral("A,1009, A,1010, A,1001, A,1011,x A,1003, A,1006, A,1004,10 A,1018, "
                                    "A,1005, A,1006, A,1016, A,1017, A,7,1 A,1015, A,1008, A,1007, A,1013, "
                                    "A,1002, A,1045,") +
                     longName));
        QTRY_VERIFY_WITH_TIMEOUT(!rig.events(unitA, Downloaded).isEmpty(), waitMs);
        QCOMPARE(rig.events(unitA, Lost).size(), 1);
        QCOMPARE(rig.stopHost(), 0);
        QCOMPARE(commandsIn(rig.trace("trace")),
                 QStringLiteral("1/17:-1 1/18:-1 1/12:-1 1/0:-1 1/3:-1 1/0:10 1/2:-1 1/3:-1 1/10:-1 1/11:-1 "
                                "1/9:-1 1/7:-1 1/4:-1 1/7:-1 1/13:-1 1/20:-1"));
        QVERIFY(QFile::exists(rig.path(longName)));
    }

    void commandsOfALostUnit_data() { Rig::addTransportRows(); }
    // The first command ends its run, so that the others wait while the next query finds the unit gone. Over
    // TCP they go on waiting for the connection. On a line they are tried once and never again: a command
    // that comes when nobody expects it any more would do harm.
    void commandsOfALostUnit()
    {
        QFETCH(QString, transport);
        QFETCH(QString, config);
        const bool isTcp = transport.contains(QLatin1String("--tcp"));
        Rig rig;
        rig.startUnitA(transport, config, "none", "retries=1",
                       {QStringLiteral("--fault"), QStringLiteral("refused 2 function 2 request 2")});
        rig.startHost(controls("A,1018, A,1009, A,1045,history.csv A,1010,"));
        QTRY_VERIFY_WITH_TIMEOUT(!rig.events(unitA, Downloaded).isEmpty(), waitMs);
        QCOMPARE(rig.events(unitA, Downloaded).constFirst().value(QStringLiteral("desc")).toString(),
                 isTcp ? QStringLiteral("A Download history successful")
                       : QStringLiteral("A Download history failed"));
        QTRY_VERIFY_WITH_TIMEOUT(rig.events(unitA, Restored).size() == 2, waitMs);
        rig.takeEvents();
        // Whatever waited would be sent by now.
        QTRY_VERIFY_WITH_TIMEOUT(rig.events(unitA, Data).size() >= 2, waitMs);
        QCOMPARE(rig.stopHost(), 0);
        QCOMPARE(commandsIn(rig.trace("trace")),
                 isTcp ? QStringLiteral("1/17:-1 1/20:-1 1/18:-1") : QString());
        QCOMPARE(contentOf(rig.path("history.csv")).count('\n') > 1, isTcp);
    }

    // Both units have so much to tell that their downloads meet, again and again.
    void twoHistoriesAtOnce()
    {
        Rig rig;
        rig.write("alarms", "0 random alarms 150 0.1\n0.3 random alarms off\n");
        rig.writeUnits("[A]\nportName=ttyA\n[B]\nportName=ttyB\n");
        QMap<QString, int> tcpPorts; // the test's own way to what a unit holds
        QString commands;
        for (const QString& unit : {unitA, unitB}) {
            tcpPorts[unit] = rig.startUnits(
                unit, words(QStringLiteral("--tcp 0 --serial tty%1 --baud 0 --scenario alarms --trace %1 "
                                           "--seed %2")
                                .arg(unit)
                                .arg(tcpPorts.size())));
            QTRY_VERIFY(contentOf(rig.path(unit)).contains("random alarms off"));
            for (int i = 0; i < downloads; ++i)
                commands += QStringLiteral("%1,1045,%1%2.csv ").arg(unit).arg(i);
            rig.write(QString(unit + QStringLiteral("0.csv")), QByteArray(200000, 'x')); // to be replaced
        }
        // Nobody can write below a file, not even a superuser.
        commands += QStringLiteral("B,1045,dev.ini/history.csv");
        rig.write("dev.ini", {});
        rig.startHost(controls(commands) << QStringLiteral("--verbose"));
        QTRY_COMPARE_WITH_TIMEOUT(rig.events(unitA, Downloaded).size(), downloads, waitMs);
        QTRY_COMPARE_WITH_TIMEOUT(rig.events(unitB, Downloaded).size(), downloads + 1, waitMs);
        QCOMPARE(rig.stopHost(), 0);

        const QByteArray expectedA = expectedExport(tcpPorts.value(unitA));
        const QByteArray expectedB = expectedExport(tcpPorts.value(unitB));
        QVERIFY(expectedA.count('\n') > 300 && expectedB.count('\n') > 300 && expectedA != expectedB);
        for (int i = 0; i < downloads; ++i) {
            QVERIFY(contentOf(rig.path(QStringLiteral("A%1.csv").arg(i))) == expectedA);
            QVERIFY(contentOf(rig.path(QStringLiteral("B%1.csv").arg(i))) == expectedB);
        }
        QCOMPARE(contentOf(rig.path("history.txt")), QByteArray());
        QVERIFY(rig.hostErrors().contains("history: cannot write dev.ini/history.csv: "));
    }
};

QTEST_GUILESS_MAIN(tst_EndToEnd)
#include "tst_endtoend.moc"
