#include "columns.h"
#include "simulatorprocess.h"
#include "testfiles.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <modbus.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

/// What mbpoll read, register by register; empty when it failed.
QMap<int, int> poll(const Text& arguments, int* exitCode = nullptr)
{
    QProcess mbpoll;
    mbpoll.start(QStringLiteral("mbpoll"), words(arguments + QStringLiteral(" -1 -q -0")));
    if (!mbpoll.waitForFinished(patienceMs))
        qWarning("mbpoll did not run: %s", qPrintable(mbpoll.errorString()));
    if (exitCode)
        *exitCode = mbpoll.exitCode();
    QMap<int, int> values;
    const QString output = QString::fromUtf8(mbpoll.readAllStandardOutput());
    const QRegularExpression line(QStringLiteral("\\[(\\d+)\\]:\\s+(\\d+)"));
    for (auto match = line.globalMatch(output); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        values.insert(found.captured(1).toInt(), found.captured(2).toInt());
    }
    return values;
}

} // namespace

/// The program as a whole, against Debian's mbpoll and plain sockets.
class TestUpsSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        QVERIFY(QDir::setCurrent(m_folder.path()));
    }

    void mbpollReadsAndWrites_data()
    {
        const auto row = columns<bool>("serial");
        row("tcp", false);
        row("serial", true);
    }
    void mbpollReadsAndWrites()
    {
        QFETCH(bool, serial);
        Simulator simulator(words("--tcp --serial line --baud 38400 --address 1 --address 2"));
        QVERIFY(simulator.waitReady("listening") && simulator.waitReady("serial line line ready"));
        const QString target = serial ? QStringLiteral("line -m rtu -P none -b 38400 ")
                                      : QStringLiteral("127.0.0.1 -p %1 ").arg(simulator.port());
        int exitCode = 0;

        // Two units on one transport, told apart by their communication address.
        for (int address : {1, 2})
            QCOMPARE(poll(target + QStringLiteral("-t 4 -r 74 -a %1").arg(address)).value(74), address);
        const QMap<int, int> live = poll(target + QStringLiteral("-a 2 -t 3 -r 101 -c 124"));
        QCOMPARE(live.size(), 124);
        QVERIFY(live.value(163) > 2200 && live.value(163) < 2400);
        QCOMPARE(poll(target + QStringLiteral("-a 1 -t 1 -r 387 -c 125")).size(), 125);

        poll(target + QStringLiteral("-a 2 -t 4 -r 17 36"), &exitCode);
        QCOMPARE(exitCode, 0);
        QCOMPARE(poll(target + QStringLiteral("-a 2 -t 4 -r 17")).value(17), 36);
        QCOMPARE(poll(target + QStringLiteral("-a 1 -t 4 -r 17")).value(17), 40);
        for (const char* refused :
             {"-a 2 -t 4 -r 17 15", "-a 2 -t 4 -r 9 0", "-a 2 -t 0 -r 0", "-a 3 -t 4 -r 0 -o 0.2"}) {
            poll(target + QLatin1String(refused), &exitCode);
            QVERIFY2(exitCode != 0, refused);
        }
    }

    void traceTellsTheTruth()
    {
        Simulator simulator(words("--tcp 0 --trace trace.jsonl --address 7 --name Alpha --scenario none"));
        QVERIFY(simulator.waitReady("listening"));
        const QString target = QStringLiteral("127.0.0.1 -a 7 -p %1 ").arg(simulator.port());
        poll(target + QStringLiteral("-t 4 -r 4113 65535"));
        poll(target + QStringLiteral("-t 4 -r 17 20"));
        poll(target + QStringLiteral("-t 4 -r 17 10"));
        const QMap<int, int> live = poll(target + QStringLiteral("-t 3 -r 80 -c 100"));
        simulator.signal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);

        QByteArrayList deeds;
        QMap<int, QSet<int>> held; // raw voltages by point
        bool isFirst = true;
        for (const QByteArray& line : contentOf("trace.jsonl").trimmed().split('\n')) {
            const int contentAt = line.indexOf(",\"address\":7,") + 13;
            QVERIFY2(line.startsWith("{\"t\":1") && contentAt > 13, line);
            const QJsonObject entry = QJsonDocument::fromJson(line).object();
            const QJsonObject points = entry.value(QStringLiteral("points")).toObject();
            if (std::exchange(isFirst, false))
                QCOMPARE(points.size(), 512 + 164 + 276);
            if (points.isEmpty())
                deeds += line.mid(contentAt);
            for (int point : {4163, 4133})
                held[point].insert(qRound(points.value(QString::number(point)).toDouble() * 10));
        }
        QCOMPARE(deeds.join(' '),
                 QByteArray("\"buzzer\":false} \"command\":17,\"argument\":null} \"buzzer\":true} "
                            "\"settings\":{\"3017\":20}} "
                            "\"rejected\":{\"function\":6,\"register\":17,\"exception\":3}}"));
        for (int point : {4163, 4133})
            QVERIFY(held.value(point).contains(live.value(point - 4000)));
        QCOMPARE(live.value(80), int('A'));
    }

    void scenarioInVirtualTime()
    {
        writeFile("course", "120 mains off\n+60 fault late 1 # only of the line's first unit\n");
        Simulator simulator(words("--tcp 0 --address 1 --address 2 --trace course.trace "
                                  "--scenario course --time-scale 300"));
        QVERIFY(simulator.waitReady("listening"));
        const auto trace = [] { return contentOf("course.trace"); };
        QTRY_COMPARE_WITH_TIMEOUT(trace().count("\"scenario\":\"mains off\"}"), 2, patienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(trace().count("\"2257\":1") == 2, patienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(trace().count("\"scenario\":\"fault late 1\"}"), 2, patienceMs);
        poll(QStringLiteral("127.0.0.1 -a 2 -t 4 -r 17 -p %1").arg(simulator.port()));
        QTRY_COMPARE_WITH_TIMEOUT(trace().count("\"fault\":\"late 1\""), 1, patienceMs);
    }

    void oddTcpClients()
    {
        Simulator simulator(words("--tcp 0"));
        QVERIFY(simulator.waitReady("listening"));
        const QByteArray request = QByteArray::fromHex("0001000000060103001100 01");
        const QByteArray reply = QByteArray::fromHex("000100000005 0103020028");
        const auto answers = [&](QTcpSocket& client, int count) {
            while (client.bytesAvailable() < reply.size() * count && client.waitForReadyRead(patienceMs)) {
            }
            return client.readAll() == reply.repeated(count);
        };

        const auto connectTo = [&](QTcpSocket& client) {
            client.connectToHost(QStringLiteral("127.0.0.1"), quint16(simulator.port()));
            return client.waitForConnected(patienceMs);
        };
        QTcpSocket idle;
        QTcpSocket client;
        QVERIFY(connectTo(idle) && connectTo(client));
        for (char byte : request) {
            client.write(&byte, 1);
            QVERIFY(client.waitForBytesWritten(patienceMs));
        }
        QVERIFY(answers(client, 1));
        // Another unit's request and another protocol's message between two good ones pass without a trace.
        client.write(request + QByteArray::fromHex("000100000006020300110001 000100010006010300110001") +
                     request);
        QVERIFY(answers(client, 2));
        // A length that cannot be ends the connection, whatever follows; so does no other.
        for (const char* length : {"0000", "0001", "00ff", "ffff"}) {
            QTcpSocket confused;
            QVERIFY(connectTo(confused));
            confused.write(QByteArray::fromHex(QByteArray("00010000") + length + "0103") + request);
            QVERIFY2(confused.waitForDisconnected(patienceMs), length);
        }
        {
            QTcpSocket gone;
            QVERIFY(connectTo(gone));
            gone.write(request.left(5));
            gone.abort();
        }
        client.write(request);
        QVERIFY(answers(client, 1));
        idle.write(request);
        QVERIFY(answers(idle, 1));
    }

    void serialPaceAndSilence()
    {
        Simulator simulator(words("--serial line --baud 9600 --address 9"));
        QVERIFY(simulator.waitReady("ready"));
        modbus_t* client = modbus_new_rtu("line", 9600, 'N', 8, 1);
        modbus_set_slave(client, 9);
        modbus_set_response_timeout(client, 5, 0);
        QCOMPARE(modbus_connect(client), 0);
        // 8 characters out, 3.5 of silence, 5 + 2 * 125 back, 10 bits each.
        const double wireMs = (8 + 3.5 + 255) * 10 / 9.6;
        uint16_t registers[125];
        double fastestMs = 1e9;
        for (int i = 0; i < 5; ++i) {
            QElapsedTimer timer;
            timer.start();
            QCOMPARE(modbus_read_input_registers(client, 100, 125, registers), 125);
            fastestMs = qMin(fastestMs, double(timer.nsecsElapsed()) / 1e6);
        }
        modbus_close(client);
        modbus_free(client);
        qInfo("%.2f ms for %.2f ms of wire", fastestMs, wireMs);
        QVERIFY(fastestMs >= wireMs - 0.1);
        QVERIFY(fastestMs < wireMs * 1.1);
    }

    void clientsComeAndGo()
    {
        Simulator simulator(words("--serial line --baud 0"));
        QVERIFY(simulator.waitReady("ready"));
        const QByteArray request = QByteArray::fromHex("01030010000185CF");
        const char* const pollArguments = "line -m rtu -P none -b 9600 -t 4 -r 17";
        {
            // Leaves with a reply unread and line editing on, which the next client must not notice.
            const int port = ::open("line", O_RDWR | O_NOCTTY);
            termios edited{};
            QCOMPARE(::tcgetattr(port, &edited), 0);
            edited.c_lflag |= ICANON | ECHO;
            edited.c_oflag |= OPOST | ONLCR;
            ::tcsetattr(port, TCSANOW, &edited);
            QCOMPARE(::write(port, request.constData(), size_t(request.size())), ssize_t(request.size()));
            int unread = 0;
            QTRY_VERIFY(::ioctl(port, FIONREAD, &unread) == 0 && unread == 7);
            ::close(port);
        }
        QCOMPARE(poll(pollArguments).value(17), 40);
        const int port = ::open("line", O_RDWR | O_NOCTTY);
        termios seen{};
        QCOMPARE(::tcgetattr(port, &seen), 0);
        ::close(port);
        QVERIFY(!(seen.c_lflag & (ICANON | ECHO)) && !(seen.c_oflag & OPOST));
    }

    void linkIsTakenOverOnlyWhenStale()
    {
        Simulator first(words("--serial line"));
        QVERIFY(first.waitReady("ready"));
        Simulator second(words("--serial line"));
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(second.errors().contains("in use by another ups-sim"));
        first.signal(SIGKILL);
        QCOMPARE(first.exitCode(), -1);
        QVERIFY(QFileInfo(QStringLiteral("line")).isSymLink());

        Simulator third(words("--serial line"));
        QVERIFY(third.waitReady("ready"));
        third.signal(SIGINT);
        QCOMPARE(third.exitCode(), 0);
        QVERIFY(!QFileInfo(QStringLiteral("line")).isSymLink());
    }

    void refusals_data()
    {
        const auto row = columns<int, QString>("exitCode", "named"); // what the one line has to name
        row("", 2, "--serial LINK");
        row("--tcp 0 --fast", 2, "fast");
        row("--tcp 0 extra", 2, "extra");
        row("--tcp 70000", 2, "70000");
        row("--tcp 1x", 2, "1x");
        row("--tcp --bind here", 2, "here");
        row("--serial s --baud -3", 2, "-3");
        row("--tcp 0 --baud 9600", 2, "--serial");
        row("--tcp 0 --address 0", 2, "--address 0");
        row("--tcp 0 --address 248", 2, "248");
        row("--tcp 0 --address 3 --address 3", 2, "--address 3");
        row("--tcp 0 --name a --name b", 2, "--name b");
        row("--tcp 0 --name SeventeenLetters1", 2, "SeventeenLetters1");
        row("--tcp 0 --seed x", 2, "--seed x");
        row("--tcp 0 --time-scale 0", 2, "--time-scale 0");
        row("--tcp 0 --scenario none/file", 1, "none/file");
        row("--tcp 0 --scenario bad --trace half", 2, "bad:2: fault \"often\"");
        row("--tcp 0 --trace none/trace", 1, "none/trace");
        row("--tcp 0 --bind 203.0.113.9", 1, "203.0.113.9");
        row("--serial none/line", 1, "none/line");
        row("--serial file", 1, "file");
        row("--serial foreign", 1, "foreign");
        row("--tcp TAKEN", 1, "in use");
    }
    void refusals()
    {
        QFETCH(QString, named);
        writeFile("file", {});
        writeFile("bad", "1 mains off\n2 fault often\n");
        QFile::link(QStringLiteral("file"), QStringLiteral("foreign"));
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress::LocalHost));
        Simulator simulator(
            words(rowName().replace(QLatin1String("TAKEN"), QString::number(taken.serverPort()))));
        QTEST(simulator.exitCode(), "exitCode");
        const QString line = QString::fromLocal8Bit(simulator.errors());
        QVERIFY2(line.startsWith(QLatin1String("ups-sim: ")) && line.count(QLatin1Char('\n')) == 1,
                 qPrintable(line));
        QVERIFY2(line.contains(named), qPrintable(line));
        QVERIFY(!QFileInfo::exists(QStringLiteral("half"))); // nothing is begun that is not to be finished
        QVERIFY(QFileInfo::exists(QStringLiteral("file")) &&
                QFileInfo(QStringLiteral("foreign")).isSymLink());
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestUpsSim)
#include "tst_upssim.moc"
