#include "columns.h"
#include "endpoint.h"
#include "entry.h"
#include "fakeunit.h"
#include "scenarioparser.h"
#include "simulatedunit.h"
#include "testfiles.h"

using namespace simulation;

namespace {

using Fault = std::function<QByteArray(int request, const QByteArray& good)>;

const QString fileName = QStringLiteral("history.txt");

/// A simulated unit behind a port handle, without a line between.
struct Unit : FakeUnit
{
    explicit Unit(const QByteArray& scenario)
        : FakeUnit(Line::Serial)
        , unit({1, "Test"}, 1714998600000, nullptr,
               {0, *parseScenario(scenario, QString(), nullptr, nullptr), 0, nullptr})
        , endpoint(Framing::Rtu, unit)
    {
        answer = [this](const QByteArray& request) {
            if (beforeAnswer)
                beforeAnswer(requests.size());
            const Bytes reply = endpoint.answer(Bytes(request.begin(), request.end()));
            return QByteArray(reinterpret_cast<const char*>(reply.data()), int(reply.size()));
        };
    }

    void run(int seconds)
    {
        for (int i = 0; i < seconds; ++i)
            unit.advance(1000);
    }

    SimulatedUnit unit;
    Endpoint endpoint;
    std::function<void(int request)> beforeAnswer; ///< counts from 1
};

QByteArray textOf(const EventHistory& history)
{
    QByteArray text;
    for (const auto& record : history.records()) {
        QByteArrayList fields;
        for (const uint16_t field : record)
            fields += QByteArray::number(field);
        text += fields.join(' ') + '\n';
    }
    return text;
}

int download(Unit& unit)
{
    return Control(&unit, 1, "20,", nullptr);
}

const QByteArray busy = "0 random alarms 40 1";

} // namespace

Q_DECLARE_METATYPE(Fault)

/// The history of a simulated unit through the driver into the file.
class TestHistoryDownload : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(m_folder->path()));
    }

    void cleanup()
    {
        // Neither a part of a file nor one under another name.
        QVERIFY(QDir().entryList(QDir::Files | QDir::Hidden).size() <= 1);
        QDir::setCurrent(QStringLiteral("/"));
    }

    void roundTrip_data()
    {
        const auto row = columns<QByteArray, int, int>("scenario", "seconds", "records");
        row("none", "", 5, 0);
        row("one mains failure", "2 mains off\n9 mains on", 20, 14);
        row("a page and one more", "1 random alarms 16 1", 2, 16);
        row("full, many lost", busy, 100, 1000);
        row("cleared", busy + "\n98 random alarms off\n99 command 13", 100, 0);
    }
    void roundTrip()
    {
        QFETCH(QByteArray, scenario);
        QFETCH(int, seconds);
        QFETCH(int, records);
        Unit unit(scenario);
        unit.run(seconds);
        writeFile(fileName, "of another unit\n");
        QCOMPARE(download(unit), int(driver::Done));
        const QByteArray text = contentOf(fileName);
        QCOMPARE(text, textOf(unit.unit.history()));
        QCOMPARE(text.count('\n'), records);
        QVERIFY(QFileInfo(fileName).permissions() & QFile::ReadOther);
        // Nothing but the header and whole pages: command, header, pages, header.
        QVERIFY2(unit.requests.size() <= 3 + (records + 13) / 14,
                 qPrintable(QString::number(unit.requests.size())));
        if (records == 14)
            QCOMPARE(text.left(text.indexOf('\n')), QByteArray("19 1 24 5 6 12 30 2"));
    }

    void recordsMoveMeanwhile()
    {
        // Events while a full history is read: the first attempt is of no use, the second is.
        Unit unit(busy + "\n100.5 random alarms off");
        unit.run(90);
        unit.beforeAnswer = [&](int request) {
            if (request == 10)
                unit.run(20);
        };
        QCOMPARE(download(unit), int(driver::Done));
        QCOMPARE(contentOf(fileName), textOf(unit.unit.history()));

        // Events that never end: no file rather than a wrong one.
        Unit flapping(busy);
        flapping.run(90);
        flapping.beforeAnswer = [&](int request) {
            if (request % 10 == 0)
                flapping.run(1);
        };
        QVERIFY(QFile::remove(fileName));
        QCOMPARE(download(flapping), int(driver::HistoryMoving));
        QVERIFY(!QFile::exists(fileName));
        QVERIFY(flapping.requests.size() < 250);

        // New events that cost no old one do not matter.
        Unit growing("1 random alarms 10 1");
        growing.run(21);
        const QByteArray before = textOf(growing.unit.history());
        growing.beforeAnswer = [&](int request) {
            if (request == 6)
                growing.run(1);
        };
        QCOMPARE(download(growing), int(driver::Done));
        QCOMPARE(contentOf(fileName), before);
        QVERIFY(textOf(growing.unit.history()).size() > before.size());
    }

    void faults_data()
    {
        const auto row = columns<int, Fault>("result", "fault");
        const int done = driver::Done;
        row("one reply lost", done,
            [](int n, const QByteArray& good) { return n == 7 ? QByteArray() : good; });
        row("every reply twice", driver::BadReply, [](int, const QByteArray& good) { return good + good; });
        row("a few replies twice", done,
            [](int n, const QByteArray& good) { return n % 9 ? good : good + good; });
        row("reply of the page before", done,
            [previous = QByteArray()](int n, const QByteArray& good) mutable {
                const QByteArray last = previous;
                previous = good;
                return n == 5 ? last : good;
            });
        row("a byte wrong", done,
            [](int n, QByteArray good) { return n == 3 ? good.replace(20, 1, "?") : good; });
        row("silent from the fifth on", driver::NoAnswer,
            [](int n, const QByteArray& good) { return n < 5 ? good : QByteArray(); });
        row("no such registers", driver::Rejected,
            [](int n, const QByteArray& good) { return n == 1 ? good : QByteArray::fromHex("018402c2c1"); });
        row("impossible count", driver::BadReply, [](int n, const QByteArray& good) {
            return n == 1 ? good : QByteArray::fromHex("01040407d00000bba6");
        });
    }
    void faults()
    {
        QFETCH(Fault, fault);
        Unit unit("1 random alarms 40 1");
        unit.run(10);
        unit.fault = [&](const QByteArray& good) {
            return QByteArrayList{fault(unit.requests.size(), good)};
        };
        const int result = download(unit);
        QTEST(result, "result");
        const QByteArray expected = result == driver::Done ? textOf(unit.unit.history()) : "(no file)";
        QCOMPARE(contentOf(fileName), expected);
    }

    void fileCannotBeWritten()
    {
        Unit unit(busy);
        unit.run(100);
        // A disk that is full after a few bytes: the earlier file stays.
        writeFile(fileName, "1 1 24 1 1 1 1 1\n");
        limitFileSize(4096);
        const int result = download(unit);
        limitFileSize(RLIM_INFINITY);
        QCOMPARE(result, int(driver::FileNotWritten));
        QCOMPARE(contentOf(fileName), QByteArray("1 1 24 1 1 1 1 1\n"));

        // A folder that is gone stands for one that cannot be written, which root never meets; the unit is
        // not asked.
        QDir gone(QDir::current());
        QVERIFY(gone.mkdir(QStringLiteral("gone")) && QDir::setCurrent(QStringLiteral("gone")));
        QVERIFY(gone.rmdir(QStringLiteral("gone")));
        unit.requests.clear();
        QCOMPARE(download(unit), int(driver::FileNotWritten));
        QVERIFY(unit.requests.isEmpty());
        QDir::setCurrent(m_folder->path());
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestHistoryDownload)
#include "tst_historydownload.moc"
