#include "columns.h"
#include "entry.h"
#include "fakeunit.h"
#include "transaction.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <algorithm>
#include <iterator>
#include <utility>

using Bytes = QByteArray;
using List = QByteArrayList;
using E = driver::ReplyError;
using Line = FakeUnit::Line;
Q_DECLARE_METATYPE(Line)

namespace {

using Points = QVector<QPair<int, float>>;

void collect(int point, float value, void* context)
{
    static_cast<Points*>(context)->append({point, value});
}

constexpr driver::TransferLimits shortLimits{std::chrono::milliseconds(50), std::chrono::milliseconds(50)};

/// The block of live values: 124 registers, a reply of 253 bytes.
driver::Request liveValuesRequest()
{
    return driver::readRequest(1, unitmap::blocks[2]);
}

Bytes hex(const char* text)
{
    return Bytes::fromHex(text);
}

} // namespace

class TestDriver : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // A download leaves its file in the working directory.
        QVERIFY(m_folder.isValid() && QDir::setCurrent(m_folder.path()));
    }

    void readsEveryPointOnce()
    {
        // function << 16 | register -> what it holds
        const QHash<int, quint16> held{{0x20009, 1},    {0x201FF, 1},      {0x40010, 'V'},
                                       {0x40067, 2203}, {0x4006B, 0xFFCE}, {0x4008E, 0x62},
                                       {0x30017, 50},   {0x30037, 0xFFFE}, {0x30067, 24}};
        FakeUnit unit(Line::Serial);
        unit.registers = [&](int function, int reg) { return held.value(function << 16 | reg); };
        Points points;
        QVERIFY(Query(&unit, 1, collect, &points) != 0);

        // Made by another program.
        const List expected{hex("010200000200796a"), hex("0104000000653021"), hex("01040065007ce1f4"),
                            hex("010400e10033e029"), hex("0103000000570434"), hex("01030057004d342f")};
        QCOMPARE(unit.requests, expected);
        QCOMPARE(points.size(), 512 + 276 + 164);
        QMap<int, float> seen;
        for (const auto& point : points) {
            if (point.second != 0.0F)
                seen[point.first] = point.second;
        }
        // The charge current limit names an option: 0.5 A reads as 0.
        const QMap<int, float> values{{2009, 1.0F},  {2511, 1.0F},  {4016, 86.0F}, {4103, 220.3F},
                                      {4107, -5.0F}, {4142, 0.98F}, {3055, -0.2F}, {3103, 24.0F}};
        QCOMPARE(seen, values);
    }

    void sendsCommands_data()
    {
        const auto row = columns<Bytes>("frame"); // in hexadecimal, made by another program; empty: refused
        row("17,", "01061011ffffdcbf");
        row("0,", "01061000ffff8cba");
        row("0,10", "01061000000a0d0d");
        row("12,65534", "0106100cfffe8d79");
        row("20,/tmp/history.csv", "01061014ffffccbe");
        row(" 3017,  32", "010600110020d817");
        row("3003,-5", "01060003fffb79b9");
        row("3087,ACME, \xE9",
            "0110005700102000410043004d0045002c002000e9000000000000000000000000000000000000cd1a");
        row("3103,24,05,06,12,30,00", "0110006700060c001800050006000c001e0000373a");
        row("3103,24,02,29,23,59,59", "0110006700060c00180002001d0017003b003b8e11");
        // Unknown codes, arguments that are no number, codes without their comma
        for (const char* text :
             {"", "17", ",", "1,300", "5,", "-1,", "17,on", "17,3x", "0,-1", "0,65535", "0x11,", "17.0,",
              "99999999999,1",
              // not a setting, reserved, outside the map, not the first point of its row
              "2022,1", "3009,1", "3130,1", "3164,1", "4103,1", "3088,A", "3104,24,05,06,12,30,00",
              // values that do not fit
              "3017,-1", "3017,65536", "3003,32768", "3003,-32769", "3017,", "3017,3.5", "3077,12345678901",
              "3103,24,02,30,00,00,00", "3103,23,02,29,00,00,00", "3103,24,05,06,12,30",
              "3103,24,05,06,12,30,00,1", "3103,24,13,06,12,30,00", "3103,24,05,06,24,00,00", "3103,",
              "20,a file name that is longer than any caller sends it"})
            row(text, "");
    }
    void sendsCommands()
    {
        QFETCH(Bytes, frame);
        frame = Bytes::fromHex(frame);
        const char* const text = QTest::currentDataTag();
        FakeUnit unit(Line::Serial);
        QCOMPARE(Control(&unit, 1, text, nullptr), int(frame.isEmpty() ? driver::Refused : driver::Done));
        QCOMPARE(unit.requests.value(0), frame);
        if (frame.isEmpty())
            return;

        const Bytes rejection = withCrc(frame.left(1) + char(frame[1] | 0x80) + '\x03');
        const Bytes wrongEcho = withCrc(frame.left(5) + char(frame[5] ^ 1));
        const Bytes ofAnother = withCrc(frame.left(3) + char(frame[3] ^ 1) + frame.mid(4, 2));
        const QPair<List, driver::ControlResult> failures[] = {{{rejection}, driver::Rejected},
                                                               {{wrongEcho}, driver::BadReply},
                                                               {{ofAnother}, driver::BadReply},
                                                               {{}, driver::NoAnswer}};
        for (const auto& failure : failures) {
            unit.fault = [&](const Bytes&) { return failure.first; };
            QCOMPARE(Control(&unit, 1, text, nullptr), int(failure.second));
        }
    }

    void endsInTime_data()
    {
        // 0 answers: as many bytes as asked for
        const auto row = columns<int, int, int>("msPerByte", "answer", "leastReads");
        row("endless noise", 0, 0, 3);
        row("slow after the head", 12, 1, 3);
        row("trickle", 10, 0, 3);
        row("lost connection", 0, -5, 2);
        row("swallowed fragments", 2, -5, 4);
        row("port gone", 0, -1, 1);
    }
    void endsInTime()
    {
        QFETCH(int, msPerByte);
        QFETCH(int, answer);
        QFETCH(int, leastReads);
        FakeUnit unit(Line::Serial);
        int reads = 0;
        unit.reader = [&](char* buffer, int length) {
            ++reads;
            if (answer <= 0 || reads > answer) // as many reads are quick
                QThread::msleep(static_cast<unsigned long>(msPerByte) * (answer < 0 ? 1U : unsigned(length)));
            std::fill(buffer, buffer + length, '\x55');
            return answer < 0 ? answer : length;
        };
        QElapsedTimer timer;
        timer.start();
        const E error = driver::Transaction(unit, shortLimits).run(liveValuesRequest());
        QCOMPARE(error, answer < 0 ? E::NoAnswer : E::BadCrc);
        QVERIFY2(timer.elapsed() < 1500, qPrintable(QString::number(timer.elapsed())));
        QVERIFY2(reads >= leastReads && (answer >= 0 || reads < 100), qPrintable(QString::number(reads)));
    }

    void lateReplyIsReadAway()
    {
        FakeUnit unit(Line::Serial);
        int reads = 0;
        unit.reader = [&](char* buffer, int length) { return reads++ == 0 ? 0 : unit.read(buffer, length); };
        QCOMPARE(Control(&unit, 1, "4,", nullptr), int(driver::NoAnswer));
        // All commands are acknowledged alike: what is left would be taken for the next one's.
        QVERIFY(unit.pending.join().isEmpty());
    }

    void leavesAGapBetweenFrames()
    {
        constexpr int msPerByte = 3;
        FakeUnit unit(Line::Serial);
        QElapsedTimer silence;
        unit.reader = [&](char* buffer, int length) {
            QThread::msleep(static_cast<unsigned long>(msPerByte * length));
            silence.start();
            return unit.read(buffer, length);
        };
        QCOMPARE(Control(&unit, 1, "17,", nullptr), int(driver::Done));
        QVERIFY2(silence.elapsed() >= msPerByte * 3.5 - 1, qPrintable(QString::number(silence.elapsed())));
    }

    void neverReportsAWrongValue_data()
    {
        QTest::addColumn<Line>("line");
        QTest::newRow("serial") << Line::Serial;
        QTest::newRow("byte by byte") << Line::ByteWise;
        QTest::newRow("tcp") << Line::Tcp;
    }
    void neverReportsAWrongValue()
    {
        QFETCH(Line, line);
        QRandomGenerator random(20240506); // always the same course
        const auto below = [&](int bound) { return int(random.bounded(bound)); };
        const auto noise = [&] {
            Bytes bytes(1 + below(300), '\0');
            std::generate(bytes.begin(), bytes.end(), [&] { return char(below(256)); });
            return bytes;
        };
        quint32 generation = 0; // of the values: old ones must not show up either
        const auto registers = [&](int function, int reg) {
            return quint16((generation * 97U + quint32(function * 512 + reg)) * 2654435761U >> 9);
        };
        FakeUnit unit(line);
        unit.registers = registers;
        Bytes previous("\1\6??????");
        unit.fault = [&](const Bytes& good) {
            const int at = 1 + below(good.size() - 1);
            const Bytes late = std::exchange(previous, good);
            const bool isOfOtherBlock = late.size() != good.size() || late[1] != good[1];
            Bytes damaged = good;
            damaged.replace(at, 1 + below(4), noise().left(1 + below(4)));
            Bytes otherHead = good.left(good.size() - 2);
            otherHead[below(3)] = char(below(256));
            const List faults[] = {
                {},
                {good.left(at)},
                {good, good},
                {good + good},
                {noise(), good},
                {good, noise()},
                isOfOtherBlock ? List{late} : List{},
                isOfOtherBlock ? List{late, good} : List{},
                // of a frame in two parts, TCP loses the first bytes of the second
                {good.left(at), good.mid(line == Line::Tcp ? at + 6 : at)},
                // only a serial line shows damage inside a frame
                {line == Line::Tcp ? noise() : damaged},
                {withCrc(otherHead)},
                {withCrc(good.left(1) + char(good[1] | 0x80) + char(below(9)))},
            };
            const std::size_t which = random.bounded(60U);
            return which < std::size(faults) ? faults[which] : List{good};
        };
        FakeUnit sound(Line::Serial);
        sound.registers = registers;
        int answered = 0;
        constexpr int queries = 4000;
        for (generation = 1; generation <= queries; ++generation) {
            Points points;
            Points truth;
            if (Query(&unit, 7, collect, &points)) {
                ++answered;
                QVERIFY(Query(&sound, 7, collect, &truth));
            }
            QVERIFY2(points == truth, qPrintable(QString::number(generation)));
        }
        QVERIFY2(answered > queries / 10 && answered < queries * 9 / 10,
                 qPrintable(QString::number(answered)));
    }

    void refusesUnusablePorts()
    {
        FakeUnit unit(Line::Serial);
        QCOMPARE(Query(&unit, 1, nullptr, nullptr), 0);
        QCOMPARE(Control(&unit, 1, nullptr, nullptr), int(driver::Refused));
        PortHandle unusable[] = {{nullptr, unit.readEntry, unit.writeEntry},
                                 {&unit, nullptr, unit.writeEntry},
                                 {&unit, unit.readEntry, nullptr}};
        for (PortHandle* port : {static_cast<PortHandle*>(nullptr), unusable, unusable + 1, unusable + 2}) {
            QCOMPARE(Query(port, 1, collect, nullptr), 0);
            QCOMPARE(Control(port, 1, "17,", nullptr), int(driver::Refused));
        }
        // 0 is every unit of the line, 257 would become unit 1 on the wire.
        for (const int address : {0, 256, 257, -1}) {
            QCOMPARE(Query(&unit, address, collect, nullptr), 0);
            QCOMPARE(Control(&unit, address, "17,", nullptr), int(driver::Refused));
        }
        QVERIFY(unit.requests.isEmpty());
        PortHandle closed{&unit, unit.readEntry, [](PortHandle*, char*, int) { return -1; }};
        QCOMPARE(Query(&closed, 1, collect, nullptr), 0);
        QCOMPARE(Control(&closed, 1, "17,", nullptr), int(driver::NotSent));
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestDriver)
#include "tst_driver.moc"
