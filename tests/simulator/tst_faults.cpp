#include "columns.h"
#include "injector.h"
#include "simulatorprocess.h"
#include "testfiles.h"
#include "withcrc.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace simulation;
using namespace std::chrono_literals;
using faults::Injector;
using faults::RequestKey;

namespace {

struct Answer
{
    QByteArray bytes;
    qint64 firstMs = 0;
    qint64 lastMs = 0;
    bool ended = false; ///< connection closed, device gone
};

/// A client that knows of nothing but bytes, over either transport.
class RawClient
{
public:
    explicit RawClient(int tcpPort = 0)
        : m_tcpPort(tcpPort)
    {
        open();
    }
    ~RawClient() { ::close(m_fd); }
    Q_DISABLE_COPY(RawClient)

    bool open()
    {
        ::close(m_fd);
        if (m_tcpPort == 0)
            return (m_fd = ::open("line", O_RDWR | O_NOCTTY)) >= 0;
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(quint16(m_tcpPort));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return ::connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    /// The length of a good answer to ask().
    int answerSize() const { return m_tcpPort == 0 ? 7 : 11; }
    /// Asks a unit for the register 17 and takes what comes until nothing does for so long.
    Answer ask(int unit = 1, int quietMs = 250) const
    {
        request(unit);
        return receive(quietMs);
    }
    /// The same for an answer that should be good: nothing is waited for behind it.
    QByteArray askInGoodTimes() const
    {
        request(1);
        return receive(patienceMs, answerSize()).bytes;
    }
    void request(int unit) const
    {
        const QByteArray body = char(unit) + QByteArray::fromHex("0300110001");
        const QByteArray request =
            m_tcpPort == 0 ? withCrc(body) : QByteArray::fromHex("000700000006") + body;
        if (::send(m_fd, request, size_t(request.size()), MSG_NOSIGNAL) < 0)
            (void)!::write(m_fd, request, size_t(request.size()));
    }
    Answer receive(int quietMs, int atMost = INT_MAX) const
    {
        Answer answer;
        QElapsedTimer timer;
        timer.start();
        char byte = 0;
        for (pollfd source{m_fd, POLLIN, 0};
             answer.bytes.size() < atMost && ::poll(&source, 1, quietMs) > 0;) {
            answer.ended = ::read(m_fd, &byte, 1) != 1;
            if (answer.ended)
                break;
            answer.lastMs = timer.elapsed();
            if (answer.bytes.isEmpty())
                answer.firstMs = answer.lastMs;
            answer.bytes.append(byte);
        }
        return answer;
    }

private:
    const int m_tcpPort;
    int m_fd = -1;
};

/// QTRY looks once more at what has come true: a moment later it need not be so on a busy machine.
template <typename Condition>
auto once(Condition condition)
{
    return [condition, seen = false]() mutable { return seen = seen || condition(); };
}

using Expectation = std::function<bool(const QByteArray& good, const Answer& got)>;

} // namespace
Q_DECLARE_METATYPE(Expectation)

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(QDir::setCurrent(m_folder.path())); }
    void readsTexts_data()
    {
        const auto row = columns<QString>("named"); // by the error; empty: the text is good
        row(" late 1000  function 4 block 101 times 3 for 2.5 address 247 every", "");
        row("split", "");
        row("truncated 3 request 2", "");
        row("black-hole 0.5", "");
        row("", "no-answer, late");
        row("Late 5", "no such fault");
        row("late", "late needs MS, a whole number from 1 to 60000");
        row("late 1.5", "late needs MS");
        row("late 60001", "60000");
        row("exception every", "CODE");
        row("exception 256", "255");
        row("noise -1", "noise needs BYTES");
        row("wrong-crc 5", "\"5\"");
        row("refused nan", "\"nan\"");
        row("refused 1e9", "from 0.1 to 3600");
        row("reset for", "for needs SECONDS");
        row("reset request 0", "request needs N");
        row("reset function 4 function 3", "function is given twice");
        row("reset every request 2", "every and request");
        row("none every", "none");
    }
    void readsTexts()
    {
        QFETCH(QString, named);
        QString error;
        const bool isGood = faults::parse(rowName(), &error).has_value();
        QCOMPARE(isGood, named.isEmpty());
        QVERIFY2(error.contains(named) && error.isEmpty() == isGood, qPrintable(error));
    }

    void choosesRequests_data()
    {
        // Address/function/register, a second after each other.
        const auto row = columns<QString, QString>("requests", "applied");
        row("reset", "1/3/0 2/6/9", "reset reset");
        row("reset request 2", "1/3/0 1/3/0 1/3/0", "- reset -");
        row("reset request 2 times 2", "1/3/0 1/3/0 1/3/0 1/3/0", "- reset reset -");
        row("reset function 4 times 1", "1/3/0 1/4/0 1/4/0", "- reset -");
        row("reset block 101 address 2", "2/4/101 1/4/101 2/4/0 2/3/101", "reset - - reset");
        row("reset for 2.5", "1/3/0 1/3/0 1/3/0 1/3/0", "reset reset reset -");
        // The fault set last comes first; the one below it goes on counting.
        row("reset request 3 times 9,split times 2,noise request 2", "1/3/0 1/3/0 1/3/0 1/3/0",
            "split noise split reset");
        row("reset,none,split request 2", "1/3/0 1/3/0", "- split");
    }
    void choosesRequests()
    {
        QFETCH(QString, requests);
        Injector injector(nullptr);
        Injector::Time now{};
        for (const QString& text : rowName().split(QLatin1Char(',')))
            injector.set(faults::parse(text, nullptr).value(), now);
        QStringList applied;
        for (const QString& request : requests.split(QLatin1Char(' '))) {
            const QStringList numbers = request.split(QLatin1Char('/'));
            const RequestKey key{numbers[0].toInt(), numbers[1].toInt(), numbers[2].toInt()};
            const auto fault = injector.next(key, now);
            applied.append(fault ? QString::fromLatin1(fault->plan.text) : QStringLiteral("-"));
            now += 1s;
        }
        QTEST(applied.join(QLatin1Char(' ')), "applied");
    }

    void beginsAndEndsOutages()
    {
        QStringList outages;
        Injector injector(nullptr, [&](const Outage& outage) {
            outages.append(QString::number(int(outage.state)) + QLatin1Char('/') +
                           QString::number(outage.duration.count()));
        });
        for (const char* text :
             {"black-hole", "black-hole 2", "refused for 3", "refused 0.5 function 6", "none"})
            injector.set(faults::parse(QString::fromLatin1(text), nullptr).value());
        QCOMPARE(outages, words(QStringLiteral("2/0 2/2000 1/3000 0/0")));
        injector.set(faults::parse(QStringLiteral("refused 0.5 function 6"), nullptr).value());
        QVERIFY(!injector.next({1, 3, 0}));
        QVERIFY(injector.next({1, 6, 0}));
        QCOMPARE(outages.mid(4), words(QStringLiteral("1/500")));
    }

    void damagesReplies_data()
    {
        const auto add = columns<QString, bool, Expectation>("fault", "isTcp", "expectation");
        const auto row = [&](const QByteArray& fault, bool isTcp, const Expectation& expectation) {
            add(fault + (isTcp ? " tcp" : " serial"), fault.constData(), isTcp, expectation);
        };
        const auto both = [&](const char* fault, const Expectation& expectation) {
            row(fault, false, expectation);
            row(fault, true, expectation);
        };
        const auto exactly = [](QByteArray bytes) -> Expectation {
            return [=](const QByteArray&, const Answer& got) { return got.bytes == bytes; };
        };
        both("no-answer", exactly({}));
        both("late 100", [](auto good, auto got) { return got.bytes == good && got.firstMs >= 100; });
        row("wrong-crc", false, [](auto good, auto got) {
            return got.bytes.size() == good.size() && got.bytes.right(2) == good.right(2) &&
                   got.bytes != good;
        });
        row("wrong-crc", true,
            [](auto good, auto got) { return got.bytes == good.replace(5, 1, "\6").replace(8, 1, "\3"); });
        row("wrong-unit", false,
            [](auto good, auto got) { return got.bytes == withCrc(good.replace(0, 1, "\2").left(5)); });
        row("wrong-unit", true, [](auto good, auto got) { return got.bytes == good.replace(6, 1, "\2"); });
        both("truncated 3", [](auto good, auto got) { return got.bytes == good.left(3); });
        both("truncated 200", [](auto good, auto got) { return got.bytes == good.left(good.size() - 1); });
        both("duplicated", [](auto good, auto got) { return got.bytes == good + good; });
        both("split 20", [](auto good, auto got) {
            return got.bytes == good && got.lastMs - got.firstMs >= 19 * (good.size() - 1);
        });
        row("exception 4", false, exactly(withCrc("\1\x83\4")));
        row("exception 4", true, exactly(QByteArray::fromHex("000700000003018304")));
        both("noise 4", [](auto good, auto got) {
            return got.bytes.size() == good.size() + 4 && got.bytes.endsWith(good);
        });
        both("reset", [](auto, auto got) { return got.ended && got.bytes.isEmpty(); });
        both("refused 0.3", [](auto, auto got) { return got.ended && got.bytes.isEmpty(); });
        both("black-hole 0.3", [](auto, auto got) { return !got.ended && got.bytes.isEmpty(); });
    }
    void damagesReplies()
    {
        QFETCH(QString, fault);
        QFETCH(bool, isTcp);
        QFETCH(Expectation, expectation);
        Simulator simulator(options(fault + QStringLiteral(" request 2")));
        QVERIFY(simulator.waitReady("listening") && simulator.waitReady("ready"));
        RawClient client(isTcp ? simulator.port() : 0);
        const QByteArray good = client.askInGoodTimes();
        QCOMPARE(good.size(), client.answerSize());
        const Answer got = client.ask();
        QVERIFY2(expectation(good, got), got.bytes.toHex());
        auto isBack = once([&] { return (!got.ended || client.open()) && client.ask(1, 50).bytes == good; });
        QTRY_VERIFY_WITH_TIMEOUT(isBack(), patienceMs);

        const QByteArray line =
            "\"address\":1,\"fault\":\"" + fault.toLatin1() + "\",\"function\":3,\"register\":17}";
        QCOMPARE(contentOf("trace").count(line), 1);
    }

    void lateRepliesBlockNobody_data() { transports(); }
    void lateRepliesBlockNobody()
    {
        QFETCH(bool, isTcp);
        Simulator simulator(options(QStringLiteral("late 700 address 1")));
        QVERIFY(simulator.waitReady("listening") && simulator.waitReady("ready"));
        const RawClient client(isTcp ? simulator.port() : 0);
        QVERIFY(client.ask(1, 50).bytes.isEmpty());
        client.request(2);
        const int unitOffset = isTcp ? 6 : 0;
        for (const int unit : {2, 1})
            QCOMPARE(client.receive(patienceMs, client.answerSize()).bytes.mid(unitOffset, 1),
                     QByteArray(1, char(unit)));
    }

    void linesGoDownAndComeBack_data() { transports(); }
    void linesGoDownAndComeBack()
    {
        QFETCH(bool, isTcp);
        Simulator simulator(options(QStringLiteral("refused 0.5")));
        QVERIFY(simulator.waitReady("listening") && simulator.waitReady("ready"));
        RawClient client(isTcp ? simulator.port() : 0);
        auto isGone = once([&] { return !client.open(); });
        auto isBack = once([&] { return client.open() && !client.ask(1, 50).bytes.isEmpty(); });
        QTRY_VERIFY(isGone());
        QTRY_VERIFY_WITH_TIMEOUT(isBack(), patienceMs);
        QCOMPARE(contentOf("trace").count("\"fault\":\"refused 0.5\"}"), 1);
    }

    void blackHoleKeepsConnections()
    {
        Simulator simulator(options(QStringLiteral("black-hole 1 function 3 times 1")));
        QVERIFY(simulator.waitReady("listening"));
        const RawClient first(simulator.port());
        QVERIFY(first.ask(1, 50).bytes.isEmpty());
        const RawClient second(simulator.port());
        QVERIFY(second.ask(1, 50).bytes.isEmpty());
        // What was asked in the hole is never answered, what is asked behind it is, once.
        for (const RawClient* client : {&first, &second}) {
            const Answer inTheHole = client->receive(1200);
            QVERIFY(inTheHole.bytes.isEmpty() && !inTheHole.ended);
            QCOMPARE(client->askInGoodTimes().size(), client->answerSize());
        }
    }

private:
    static void transports()
    {
        const auto row = columns<bool>("isTcp");
        row("serial", false);
        row("tcp", true);
    }
    static QStringList options(const QString& fault)
    {
        QFile::remove(QStringLiteral("trace"));
        return words("--tcp --serial line --baud 0 --address 1 --address 2 --trace trace --fault") << fault;
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
