#include "columns.h"
#include "rig.h"

// A technician's check of a unit that does not answer: the advice must name the cause.
class tst_Check : public QObject
{
    Q_OBJECT

private slots:
    void advice_data()
    {
        // "TCP" or the address that the host asks for on a line, where the unit has 1; the fault of the
        // simulated unit; what the output must hold.
        const auto row = columns<QString, QString, QString>("asked", "fault", "text");
        row("healthy", "1", "none", "952 values, 6 requests");
        row("wire time", "1", "none", "all frames take 1108 ms");
        row("no such device", "1", "no line", "no such device ttyUPS");
        row("no bytes", "5", "none", "not one byte came back");
        row("bad CRC", "1", "wrong-crc", "compare speed and parity (now 9600,n,8,1)");
        row("other unit", "1", "wrong-unit", "answers instead of 1");
        row("exception", "1", "exception 2", "refuses a request");
        row("stops half-way", "1", "no-answer function 3", "some answers come and some do not");
        row("damaged half-way", "1", "wrong-crc function 3", "some answers come and some do not");
        row("late", "1", "late 500", "later than after 300 ms: raise timeout");
        row("unplugged", "1", "reset", "went away");
        row("TCP refused", "TCP", "refused 600", "refuses the connection");
        row("TCP silent", "TCP", "no-answer", "is connected and silent");
        row("TCP late", "TCP", "late 1500", "later than after 1000 ms");
        row("not Modbus", "TCP", "noise", "no Modbus TCP answer");
        row("TCP closed", "TCP", "reset", "closed the connection");
    }
    void advice()
    {
        QFETCH(QString, asked);
        QFETCH(QString, fault);
        QFETCH(QString, text);
        const bool isTcp = asked == QLatin1String("TCP");
        Rig rig;
        const QString transport =
            isTcp ? QStringLiteral("--tcp 0 --fault") : QStringLiteral("--serial ttyUPS --baud 0 --fault");
        int port = 0;
        if (fault != QLatin1String("no line"))
            port = rig.startUnits("A", words(transport) << fault);
        rig.write("serial.ini", "[ttyUPS]\ntimeout=300\n");
        rig.writeUnits(isTcp ? QStringLiteral("[A]\ncommType=1\nipAddr=127.0.0.1\nport=%1").arg(port)
                             : QString(QStringLiteral("[A]\nportName=ttyUPS\naddr=") + asked));
        int exitCode = -1;
        const QString output = rig.runHost(words(isTcp ? "--check A" : "--check"), &exitCode);
        QVERIFY2(output.contains(text), qPrintable(output));
        QVERIFY(isTcp || output.contains(QStringLiteral("timeout=300 (serial.ini)")));
        QVERIFY(output.contains(QStringLiteral("retries=5 (default)")));
        QCOMPARE(exitCode, output.contains(QStringLiteral("1 of 1 units answer")) ? 0 : 3);
    }
};

QTEST_GUILESS_MAIN(tst_Check)
#include "tst_check.moc"
