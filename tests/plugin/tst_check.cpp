#include "rig.h"

#include <QtTest>

// A technician's check of a unit that does not answer: the advice must name the cause.
class tst_Check : public QObject
{
    Q_OBJECT

private slots:
    void serial_data();
    void serial();
    void tcp_data();
    void tcp();
};

void tst_Check::serial_data()
{
    QTest::addColumn<QString>("fault"); // of the simulated unit; empty is none
    QTest::addColumn<int>("address");   // that the host asks for; the unit has 1
    QTest::addColumn<QString>("text");  // that the output must hold
    QTest::newRow("healthy") << QString() << 1 << QStringLiteral("952 values, 6 requests");
    QTest::newRow("wire time") << QString() << 1 << QStringLiteral("all frames take 1108 ms");
    QTest::newRow("no such device") << QStringLiteral("no line") << 1
                                    << QStringLiteral("no such device ttyUPS");
    QTest::newRow("no bytes") << QString() << 5 << QStringLiteral("not one byte came back");
    QTest::newRow("bad CRC") << QStringLiteral("wrong-crc") << 1
                             << QStringLiteral("compare speed and parity (now 9600,n,8,1)");
    QTest::newRow("other unit") << QStringLiteral("wrong-unit") << 1
                                << QStringLiteral("answers instead of 1");
    QTest::newRow("exception") << QStringLiteral("exception 2") << 1 << QStringLiteral("refuses a request");
    QTest::newRow("stops half-way") << QStringLiteral("no-answer function 3") << 1
                                    << QStringLiteral("some answers come and some do not");
    QTest::newRow("damaged half-way")
        << QStringLiteral("wrong-crc function 3") << 1 << QStringLiteral("some answers come and some do not");
    QTest::newRow("late") << QStringLiteral("late 500") << 1
                          << QStringLiteral("later than after 300 ms: raise timeout");
    QTest::newRow("unplugged") << QStringLiteral("reset") << 1 << QStringLiteral("went away");
}

void tst_Check::serial()
{
    QFETCH(QString, fault);
    QFETCH(int, address);
    QFETCH(QString, text);
    Rig rig;
    QStringList options{QStringLiteral("--serial"), QStringLiteral("ttyUPS"), QStringLiteral("--baud"),
                        QStringLiteral("0")};
    if (!fault.isEmpty())
        options << QStringLiteral("--fault") << fault;
    if (fault != QLatin1String("no line"))
        rig.startUnits(QStringLiteral("serial"), options);
    rig.writeFile(QStringLiteral("serial.ini"), "[ttyUPS]\ntimeout=300\n");
    rig.writeUnits(
        {QStringLiteral("[A]"), QStringLiteral("portName=ttyUPS"), QStringLiteral("addr=%1").arg(address)});
    int exitCode = -1;
    const QString output = rig.runHost({QStringLiteral("--check")}, &exitCode);
    QVERIFY2(output.contains(text), qPrintable(output));
    QVERIFY(output.contains(QStringLiteral("timeout=300 (serial.ini)")));
    QVERIFY(output.contains(QStringLiteral("retries=5 (default)")));
    QCOMPARE(exitCode, output.contains(QStringLiteral("1 of 1 units answer")) ? 0 : 3);
}

void tst_Check::tcp_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("text");
    QTest::newRow("refused") << QStringLiteral("refused 600") << QStringLiteral("refuses the connection");
    QTest::newRow("silent") << QStringLiteral("no-answer") << QStringLiteral("is connected and silent");
    QTest::newRow("late") << QStringLiteral("late 1500") << QStringLiteral("later than after 1000 ms");
    QTest::newRow("not Modbus") << QStringLiteral("noise") << QStringLiteral("no Modbus TCP answer");
    QTest::newRow("closed") << QStringLiteral("reset") << QStringLiteral("closed the connection");
}

void tst_Check::tcp()
{
    QFETCH(QString, fault);
    QFETCH(QString, text);
    Rig rig;
    const QString ready = rig.startUnits(QStringLiteral("tcp"), {QStringLiteral("--tcp"), QStringLiteral("0"),
                                                                 QStringLiteral("--fault"), fault});
    rig.writeUnits({QStringLiteral("[A]"), QStringLiteral("commType=1"), QStringLiteral("ipAddr=127.0.0.1"),
                    QString(QStringLiteral("port=") + ready.section(QLatin1Char(':'), -1))});
    int exitCode = -1;
    const QString output = rig.runHost({QStringLiteral("--check"), QStringLiteral("A")}, &exitCode);
    QVERIFY2(output.contains(text), qPrintable(output));
    QCOMPARE(exitCode, 3);
}

QTEST_GUILESS_MAIN(tst_Check)
#include "tst_check.moc"
