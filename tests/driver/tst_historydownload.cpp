#include "endpoint.h"
#include "entry.h"
#include "porthandle.h"
#include "scenarioparser.h"
#include "simulatedunit.h"

#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstring>
#include <functional>
#include <sys/resource.h>

using namespace simulation;

namespace {

using Fault = std::function<QByteArray(int request, const QByteArray& good)>;

const QString fileName = QStringLiteral("history.txt");

/// A simulated unit behind a port handle, without a line between. `request` counts from 1.
struct Line : PortHandle
{
    explicit Line(const QByteArray& scenario)
        : PortHandle{
              this, [](PortHandle* h, char* b, int n) { return static_cast<Line*>(h)->read(b, n); },
              [](PortHandle* h, char* b, int n) { return static_cast<Line*>(h)->write(QByteArray(b, n)); }}
        , unit({1, "Test"}, 1714998600000, nullptr,
               {0, *parseScenario(scenario, QString(), nullptr, &error), 0, nullptr})
        , endpoint(Framing::Rtu, unit)
    {}

    int write(const QByteArray& request)
    {
        ++requests;
        if (beforeRequest)
            beforeRequest(requests);
        const Bytes reply = endpoint.answer(Bytes(request.begin(), request.end()));
        const QByteArray good(reinterpret_cast<const char*>(reply.data()), int(reply.size()));
        pending += fault ? fault(requests, good) : good;
        return request.size();
    }

    int read(char* buffer, int length)
    {
        const QByteArray got = pending.left(length);
        pending.remove(0, length);
        std::memcpy(buffer, got.constData(), size_t(got.size()));
        return got.size();
    }

    void run(int seconds)
    {
        for (int i = 0; i < seconds; ++i)
            unit.advance(1000);
    }

    QString error;
    SimulatedUnit unit;
    Endpoint endpoint;
    int requests = 0;
    std::function<void(int)> beforeRequest;
    Fault fault;
    QByteArray pending;
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

QByteArray content(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

int download(Line& line)
{
    return Control(&line, 1, "20,", nullptr);
}

const QByteArray busy = "0 random alarms 40 1";

} // namespace

Q_DECLARE_METATYPE(Fault)

/// The history of a simulated unit through the driver into the file.
class TestHistoryDownload : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void roundTrip_data();
    void roundTrip();
    void recordsMoveMeanwhile();
    void faults_data();
    void faults();
    void fileCannotBeWritten();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestHistoryDownload::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir::setCurrent(m_folder->path()));
}

void TestHistoryDownload::cleanup()
{
    // Neither a part of a file nor one under another name.
    QVERIFY(QDir().entryList(QDir::Files | QDir::Hidden).size() <= 1);
    QDir::setCurrent(QStringLiteral("/"));
}

void TestHistoryDownload::roundTrip_data()
{
    QTest::addColumn<QByteArray>("scenario");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("records");
    QTest::newRow("none") << QByteArray() << 5 << 0;
    QTest::newRow("one mains failure") << QByteArray("2 mains off\n9 mains on") << 20 << 14;
    QTest::newRow("a page and one more") << QByteArray("1 random alarms 16 1") << 2 << 16;
    QTest::newRow("full, many lost") << busy << 100 << 1000;
    QTest::newRow("cleared") << busy + "\n98 random alarms off\n99 command 13" << 100 << 0;
}

void TestHistoryDownload::roundTrip()
{
    QFETCH(QByteArray, scenario);
    QFETCH(int, seconds);
    QFETCH(int, records);
    Line line(scenario);
    line.run(seconds);
    QFile earlier(fileName);
    QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write("of another unit\n") > 0);
    earlier.close();
    QCOMPARE(download(line), int(driver::Done));
    const QByteArray text = content(fileName);
    QCOMPARE(text, textOf(line.unit.history()));
    QCOMPARE(text.count('\n'), records);
    QVERIFY(QFileInfo(fileName).permissions() & QFile::ReadOther);
    // Nothing but the header and whole pages: command, header, pages, header.
    QVERIFY2(line.requests <= 3 + (records + 13) / 14, qPrintable(QString::number(line.requests)));
    if (records == 14)
        QCOMPARE(text.left(text.indexOf('\n')), QByteArray("19 1 24 5 6 12 30 2"));
}

void TestHistoryDownload::recordsMoveMeanwhile()
{
    // Events while a full history is read: the first attempt is of no use, the second is.
    Line line(busy + "\n100.5 random alarms off");
    line.run(90);
    line.beforeRequest = [&](int request) {
        if (request == 10)
            line.run(20);
    };
    QCOMPARE(download(line), int(driver::Done));
    QCOMPARE(content(fileName), textOf(line.unit.history()));

    // Events that never end: no file rather than a wrong one.
    Line flapping(busy);
    flapping.run(90);
    flapping.beforeRequest = [&](int request) {
        if (request % 10 == 0)
            flapping.run(1);
    };
    QVERIFY(QFile::remove(fileName));
    QCOMPARE(download(flapping), int(driver::HistoryMoving));
    QVERIFY(!QFile::exists(fileName));
    QVERIFY(flapping.requests < 250);

    // New events that cost no old one do not matter.
    Line growing("1 random alarms 10 1");
    growing.run(21);
    const QByteArray before = textOf(growing.unit.history());
    growing.beforeRequest = [&](int request) {
        if (request == 6)
            growing.run(1);
    };
    QCOMPARE(download(growing), int(driver::Done));
    QCOMPARE(content(fileName), before);
    QVERIFY(textOf(growing.unit.history()).size() > before.size());
}

void TestHistoryDownload::faults_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<int>("result");
    const auto row = [](const char* name, int result, const Fault& fault) {
        QTest::newRow(name) << fault << result;
    };
    const int done = driver::Done;
    row("one reply lost", done, [](int n, const QByteArray& good) { return n == 7 ? QByteArray() : good; });
    row("every reply twice", driver::BadReply, [](int, const QByteArray& good) { return good + good; });
    row("a few replies twice", done,
        [](int n, const QByteArray& good) { return n % 9 ? good : good + good; });
    row("reply of the page before", done, [previous = QByteArray()](int n, const QByteArray& good) mutable {
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

void TestHistoryDownload::faults()
{
    QFETCH(Fault, fault);
    Line line("1 random alarms 40 1");
    line.run(10);
    line.fault = fault;
    QTEST(download(line), "result");
    const QByteArray expected = line.unit.history().records().empty() || !QFile::exists(fileName)
                                    ? QByteArray("(no file)")
                                    : textOf(line.unit.history());
    QCOMPARE(content(fileName), expected);
}

void TestHistoryDownload::fileCannotBeWritten()
{
    Line line(busy);
    line.run(100);
    // A disk that is full after a few bytes: the earlier file stays.
    QFile earlier(fileName);
    QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write("1 1 24 1 1 1 1 1\n") > 0);
    earlier.close();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    ::getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit small{4096, unlimited.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const int result = download(line);
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    QCOMPARE(result, int(driver::FileNotWritten));
    QCOMPARE(content(fileName), QByteArray("1 1 24 1 1 1 1 1\n"));

    // A folder that is gone stands for one that cannot be written, which root never meets; the unit is not
    // asked.
    QDir gone(QDir::current());
    QVERIFY(gone.mkdir(QStringLiteral("gone")) && QDir::setCurrent(QStringLiteral("gone")));
    QVERIFY(gone.rmdir(QStringLiteral("gone")));
    line.requests = 0;
    QCOMPARE(download(line), int(driver::FileNotWritten));
    QCOMPARE(line.requests, 0);
    QDir::setCurrent(m_folder->path());
}

QTEST_GUILESS_MAIN(TestHistoryDownload)
#include "tst_historydownload.moc"
