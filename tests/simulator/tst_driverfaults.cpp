#include "entry.h"
#include "portaccess.h"
#include "serialport.h"
#include "simulatorprocess.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <chrono>
#include <future>
#include <thread>

namespace {

constexpr qint64 truthMs = 6000; ///< a value counts as right if the unit held it so recently
constexpr int pauseMs = 100;     ///< between two queries, as the collector has it

/// What a fault does to the queries that it meets.
enum Effect
{
    Passes, ///< the driver copes with it
    Fails   ///< at least one query says so
};

struct FaultRow
{
    const char* fault;
    Effect serial;
    Effect tcp;
    int lengthMs; ///< from the request that it meets to the end of it
};

// clang-format off
constexpr FaultRow quickRows[] = {
    {"no-answer",      Fails,  Fails,     0},
    {"late 120",       Passes, Passes,  120},
    {"late 1500",      Fails,  Fails,  1500},
    {"wrong-crc",      Fails,  Fails,     0},
    {"wrong-unit",     Fails,  Fails,     0},
    {"truncated",      Fails,  Fails,     0},
    {"truncated 2",    Fails,  Fails,     0},
    {"duplicated",     Fails,  Fails,     0},
    {"split 4",        Passes, Fails,  1100},
    {"exception 6",    Fails,  Fails,     0},
    {"noise",          Fails,  Fails,     0},
    {"reset",          Fails,  Fails,     0},
    {"refused 0.7",    Fails,  Fails,   700},
    {"black-hole 0.7", Fails,  Fails,   700},
};
constexpr FaultRow longRows[] = {
    {"late 800",       Fails,  Passes,  800},
    {"late 2100",      Fails,  Fails,  2100},
    {"late 3000",      Fails,  Fails,  3000},
    {"late 5000",      Fails,  Fails,  5000},
    {"noise 256",      Fails,  Fails,     0},
    {"split 9",        Passes, Fails,  2400},
    {"refused 5",      Fails,  Fails,  5000},
    {"black-hole 5",   Fails,  Fails,  5000},
};
// The first and the last request of the second query and what follows them.
constexpr const char* selectors[] = {
    " function 2 block 0 request 2 times 2",
    " function 3 block 87 request 2 times 2",
};
// clang-format on

struct Poll
{
    qint64 beginMs = 0;
    qint64 endMs = 0;
    bool isGood = false;
    std::vector<std::pair<int, float>> points;
};

void collect(int point, float value, void* query)
{
    static_cast<Poll*>(query)->points.emplace_back(point, value);
}

/// A port as a collector has it: opened anew before a query whenever it is gone.
class Port
{
public:
    virtual ~Port() = default;
    virtual PortHandle handle() = 0;
};

class SerialAccess : public Port
{
public:
    explicit SerialAccess(const QString& link)
        : m_link(link)
    {}
    PortHandle handle() override
    {
        if (!m_port.isOpen())
            m_port.CommOpen(m_link, QStringLiteral("9600,n,8,1"), 200);
        return {static_cast<QIODevice*>(&m_port), CommRead, CommWrite};
    }

private:
    const QString m_link;
    SerialPort m_port;
};

class TcpAccess : public Port
{
public:
    explicit TcpAccess(int port)
        : m_port(port)
    {
        m_socket.setProxy(QNetworkProxy::NoProxy);
        m_socket.setReadBufferSize(1024);
    }
    PortHandle handle() override
    {
        if (m_socket.state() != QAbstractSocket::ConnectedState) {
            m_socket.abort();
            m_socket.connectToHost(QStringLiteral("127.0.0.1"), quint16(m_port));
            m_socket.waitForConnected(patienceMs);
        }
        return {static_cast<QIODevice*>(&m_socket), TcpCommRead, TcpCommWrite};
    }

private:
    const int m_port;
    QTcpSocket m_socket;
};

/// Queries until the fault has come and gone: after four at the least, the last two of them good.
std::vector<Poll> queryThroughFault(Port& port)
{
    std::vector<Poll> queries;
    QElapsedTimer timer;
    timer.start();
    int goodInARow = 0;
    while (timer.elapsed() < patienceMs && (queries.size() < 5 || goodInARow < 2)) {
        Poll query;
        query.beginMs = QDateTime::currentMSecsSinceEpoch();
        PortHandle handle = port.handle();
        query.isGood = Query(&handle, 1, collect, &query) != 0;
        query.endMs = QDateTime::currentMSecsSinceEpoch();
        goodInARow = query.isGood ? goodInARow + 1 : 0;
        queries.push_back(std::move(query));
        std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
    }
    return queries;
}

/// What a unit truly held, and when a fault met a request.
class Truth
{
public:
    explicit Truth(const QString& tracePath)
    {
        QFile trace(tracePath);
        if (!trace.open(QIODevice::ReadOnly))
            return;
        while (!trace.atEnd())
            read(QJsonDocument::fromJson(trace.readLine()).object());
    }
    QVector<qint64> faults() const { return m_faults; }
    bool held(int point, float value, qint64 beginMs, qint64 endMs) const
    {
        const auto& history = m_held.value(point);
        auto next = history.upperBound(beginMs);
        if (next != history.begin())
            --next;
        for (; next != history.end() && next.key() <= endMs; ++next) {
            if (qFuzzyCompare(1 + next.value(), 1 + value))
                return true;
        }
        return false;
    }

private:
    void read(const QJsonObject& line)
    {
        const auto moment = qint64(line.value(QStringLiteral("t")).toDouble());
        if (line.contains(QStringLiteral("fault")))
            m_faults.append(moment);
        const QJsonObject points = line.value(QStringLiteral("points")).toObject();
        for (auto point = points.begin(); point != points.end(); ++point)
            m_held[point.key().toInt()].insertMulti(moment, float(point.value().toDouble()));
    }

    QHash<int, QMap<qint64, float>> m_held;
    QVector<qint64> m_faults;
};

/// What is wrong with a course of queries; empty when nothing is.
QString judge(const std::vector<Poll>& queries, const Truth& truth, Effect effect, int lengthMs)
{
    if (truth.faults().isEmpty() || !queries.front().isGood)
        return QStringLiteral("no fault came, or one before its time");
    const qint64 faultEnd = truth.faults().last() + lengthMs;
    int failures = 0;
    int failuresBehind = 0;
    for (const Poll& query : queries) {
        failures += query.isGood ? 0 : 1;
        failuresBehind += !query.isGood && query.beginMs > faultEnd ? 1 : 0;
        if (query.isGood ? query.points.size() != 512 + 276 + 164 : !query.points.empty())
            return QStringLiteral("%1 values").arg(query.points.size());
        for (const auto& [point, value] : query.points) {
            if (!truth.held(point, value, query.endMs - truthMs, query.endMs))
                return QStringLiteral("point %1 was never %2").arg(point).arg(double(value));
        }
    }
    if ((failures > 0) != (effect == Fails))
        return QStringLiteral("%1 queries of %2 failed").arg(failures).arg(queries.size());
    // A reply of the time of the fault may still meet one request.
    if (failuresBehind > 1 || !queries.back().isGood)
        return QStringLiteral("%1 queries failed behind the fault").arg(failuresBehind);
    return {};
}

} // namespace

/// The driver through the real port access, against units that misbehave: it may fail and has to say so, but
/// never hands over a value that the unit did not hold.
class TestDriverFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(QDir::setCurrent(m_folder.path())); }
    void neverAWrongValue_data();
    void neverAWrongValue();

private:
    QTemporaryDir m_folder;
};

void TestDriverFaults::neverAWrongValue_data()
{
    QTest::addColumn<bool>("isTcp");
    QTest::newRow("serial") << false;
    QTest::newRow("tcp") << true;
}

void TestDriverFaults::neverAWrongValue()
{
    QFETCH(bool, isTcp);
    struct Course
    {
        FaultRow row;
        QString name;
        QString trace;
        std::unique_ptr<Simulator> simulator;
        std::future<std::vector<Poll>> queries;
    };
    // All at once, for nearly all of the time is spent waiting.
    std::vector<Course> courses;
    for (const FaultRow& row : TEST_ROWS) {
        for (const char* selector : selectors) {
            Course course{row, QLatin1String(row.fault) + QLatin1String(selector), {}, {}, {}};
            const QString id = QString::number(courses.size());
            course.trace = (isTcp ? QStringLiteral("tcp") : QStringLiteral("serial")) + id;
            const QString transport =
                isTcp ? QStringLiteral("--tcp") : QStringLiteral("--baud 0 --serial line") + id;
            course.simulator =
                std::make_unique<Simulator>(words(transport + QStringLiteral(" --trace ") + course.trace)
                                            << QStringLiteral("--fault") << course.name);
            courses.push_back(std::move(course));
        }
    }
    for (std::size_t i = 0; i < courses.size(); ++i) {
        Simulator& simulator = *courses[i].simulator;
        QVERIFY(simulator.waitReady(isTcp ? "listening" : "ready"));
        const int tcpPort = isTcp ? simulator.port() : 0;
        courses[i].queries = std::async(std::launch::async, [=] {
            std::unique_ptr<Port> port;
            if (isTcp)
                port = std::make_unique<TcpAccess>(tcpPort);
            else
                port = std::make_unique<SerialAccess>(QStringLiteral("line%1").arg(i));
            return queryThroughFault(*port);
        });
    }
    QStringList wrong;
    for (Course& course : courses) {
        const std::vector<Poll> queries = course.queries.get();
        course.simulator.reset();
        const Effect effect = isTcp ? course.row.tcp : course.row.serial;
        const QString fault = judge(queries, Truth(course.trace), effect, course.row.lengthMs);
        if (!fault.isEmpty())
            wrong.append(course.name + QStringLiteral(": ") + fault);
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
}

QTEST_GUILESS_MAIN(TestDriverFaults)
#include "tst_driverfaults.moc"
