#include "pacedline.h"

#include <QtTest>

using namespace simulation;
using namespace std::chrono;

namespace {

const PacedLine::Time start(hours(1));
constexpr nanoseconds character = nanoseconds(seconds(10)) / 9600;
constexpr nanoseconds silence = character * 7 / 2;

} // namespace

/// Times of a line, without waiting for any of them.
class TestPacedLine : public QObject
{
    Q_OBJECT

private slots:
    void frameEndsWithSilence()
    {
        PacedLine line(9600);
        const Bytes request{1, 3, 0, 17, 0, 1, 0xD5, 0xCF};
        QVERIFY(!line.nextEvent());
        line.receive(start, request.data(), 5);
        // The rest follows before the line has been silent for 3.5 characters: still the same frame.
        line.receive(start + character * 5 + silence / 2, request.data() + 5, 3);
        const PacedLine::Time end = start + character * 8 + silence / 2;
        QVERIFY(line.takeFrame(end + silence - nanoseconds(1)).empty());
        QCOMPARE(line.nextEvent().value(), end + silence);
        QVERIFY(line.takeFrame(end + silence) == request);
        QVERIFY(line.takeFrame(end + silence).empty());

        const Bytes noise(1000, 0x55);
        line.receive(end + seconds(1), noise.data(), noise.size());
        QVERIFY(line.takeFrame(end + seconds(1) + character * 999).empty());
        QCOMPARE(line.takeFrame(end + seconds(3)).size(), size_t(257));
    }

    void delaysDoNotAddUp()
    {
        PacedLine line(9600);
        const Bytes request(8, 1);
        const Bytes reply(255, 2);
        PacedLine::Time now = start;
        for (int i = 0; i < 100; ++i) {
            line.receive(now, request.data(), request.size());
            Bytes arrived;
            while (arrived.size() < reply.size()) {
                const PacedLine::Time event = line.nextEvent().value();
                // Nothing may arrive early; the machine may be late by anything up to 3 ms, but not forever.
                QVERIFY(line.takeFrame(event - nanoseconds(1)).empty());
                QVERIFY(line.takeArrived(event - nanoseconds(1)).empty());
                now = event + microseconds(arrived.size() + 2 < reply.size() ? 37 * i % 3000 : 0);
                if (!line.takeFrame(now).empty())
                    line.send(reply);
                const Bytes bytes = line.takeArrived(now);
                arrived.insert(arrived.end(), bytes.begin(), bytes.end());
            }
            QVERIFY(arrived == reply);
        }
        const nanoseconds wire = (character * (8 + 255) + silence) * 100;
        QVERIFY(now - start >= wire);
        QVERIFY(now - start < wire + milliseconds(1));
    }

    void lateRepliesKeepThePace()
    {
        PacedLine line(9600);
        const Bytes byte{1};
        const nanoseconds gap = milliseconds(5);
        line.send(byte, start);
        line.send(byte, start, gap); // a piece of the same reply
        line.send(byte, start);      // another reply
        PacedLine::Time now = start;
        for (const nanoseconds& pause : {nanoseconds(0), gap, silence}) {
            now += pause + character;
            QVERIFY(line.takeArrived(now - nanoseconds(1)).empty());
            QVERIFY(line.takeArrived(now) == byte);
        }
        line.send(byte);
        line.clear();
        QVERIFY(!line.nextEvent());
    }
};

QTEST_APPLESS_MAIN(TestPacedLine)
#include "tst_pacedline.moc"
