#include "scriptedunit.h"
#include "testfiles.h"
#include "vek5client.h"

#include <QSemaphore>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>
#include <vector>

namespace {

// A port on which connections stay half-made: the queue of pending ones is full and nobody accepts.
class BlackHole
{
public:
    BlackHole()
        : m_listener(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        ::bind(m_listener, reinterpret_cast<sockaddr*>(&address), length);
        ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length);
        ::listen(m_listener, 0);
        m_port = ntohs(address.sin_port);
        for (int& client : m_clients) {
            client = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            ::connect(client, reinterpret_cast<sockaddr*>(&address), length);
        }
    }
    ~BlackHole()
    {
        for (const int client : m_clients)
            ::close(client);
        ::close(m_listener);
    }
    int port() const { return m_port; }
    // Connections to the port that the system has begun and not completed.
    int pendingConnections() const
    {
        const QByteArray port = QByteArray::number(m_port, 16).toUpper().rightJustified(4, '0');
        return contentOf("/proc/net/tcp").count(':' + port + " 02 ");
    }

private:
    int m_listener;
    int m_port = 0;
    int m_clients[4] = {};
};

std::unique_ptr<vek5Client> newCollector(const Text& config)
{
    auto collector = std::make_unique<vek5Client>();
    configure(*collector, config);
    return collector;
}

QString tcpConfig(int port)
{
    return QStringLiteral("commType=1\nipAddr=127.0.0.1\nport=%1").arg(port);
}

// Far below the 5 s pause and the 30 s wait that must not be sat out.
bool endsPromptly(std::unique_ptr<vek5Client>& collector)
{
    QElapsedTimer timer;
    timer.start();
    collector.reset();
    return timer.elapsed() < 3000;
}

} // namespace

// Collectors deleted in every phase of their work, and cycles asked for across threads.
class tst_CollectorLifetime : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        scriptedUnit().reset();
        scriptedUnit().points = {{4000, 1.0F}};
    }

    void deletedBeforeAndRightAfterStart()
    {
        for (int i = 0; i < 50; ++i) {
            auto collector = newCollector("commType=2");
            if (i % 5 != 0)
                collector->start();
            if (i % 5 == 4)
                QTRY_VERIFY(collector->isRunning());
        }
    }

    void deletedInsideAQuery()
    {
        QSemaphore isInside;
        QSemaphore mayLeave;
        scriptedUnit().hook = [&](PortHandle*) {
            isInside.release();
            mayLeave.tryAcquire(1, 200); // released by no one: the destructor has to wait for the query
        };
        auto collector = newCollector("commType=2");
        collector->start();
        QVERIFY(isInside.tryAcquire(1, 5000));
        collector.reset();
        QCOMPARE(isInside.available(), 0);
    }

    void deletedInThePauseBeforeConnecting()
    {
        // Three pollers: one is in the pause, the others wait for their turn. All must be out before it is
        // gone.
        auto collector = newCollector(tcpConfig(1));
        vek5Client* raw = collector.get();
        std::vector<std::thread> pollers;
        std::atomic<int> arrived{0};
        for (int i = 0; i < 3; ++i) {
            raw->control(1009, QString());
            pollers.emplace_back([&] {
                ++arrived;
                raw->poll();
            });
        }
        QTRY_VERIFY(arrived.load() == 3 && raw->getWorkState() == 1);
        QVERIFY(endsPromptly(collector));
        for (std::thread& poller : pollers)
            poller.join();
        QCOMPARE(scriptedUnit().queries.load(), 0);
    }

    void deletedWhileConnecting()
    {
        const BlackHole blackHole;
        const int before = blackHole.pendingConnections();
        auto collector = newCollector(tcpConfig(blackHole.port()));
        collector->start();
        QTRY_VERIFY_WITH_TIMEOUT(blackHole.pendingConnections() > before, 30000);
        QVERIFY(endsPromptly(collector));
        QCOMPARE(scriptedUnit().queries.load(), 0);
    }

    void connectionEndsWithItsThread()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        auto collector = newCollector(tcpConfig(server.serverPort()));
        QSemaphore mayEnd;
        std::thread poller([&] {
            collector->poll();
            mayEnd.acquire(); // the thread lives on, and with it the socket's notifiers
        });
        QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), 30000);
        const std::unique_ptr<QTcpSocket> peer(server.nextPendingConnection());
        QTRY_COMPARE(scriptedUnit().queries.load(), 1);
        QTRY_COMPARE(collector->getWorkState(), 0);
        collector.reset();
        QTRY_COMPARE(peer->state(), QAbstractSocket::UnconnectedState); // a unit may serve one client only
        mayEnd.release();
        poller.join();
    }

    void deletedThroughRelease()
    {
        vek5Client factory;
        auto* collector = qobject_cast<vek5Client*>(factory.create(nullptr));
        QVERIFY(collector);
        const QPointer<vek5Client> guard(collector);
        collector->start();
        static_cast<CollectThread&>(factory).release(collector); // the host's operation frees nothing
        QVERIFY(guard);
        factory.release(collector);
        factory.release(static_cast<vek5Client*>(nullptr));
        QTRY_VERIFY(!guard);
    }

    void pollIsHandedToTheRunningThread()
    {
        auto collector = newCollector("commType=2\ninterval=0");
        std::atomic<QThread*> queryThread{nullptr};
        std::atomic<int> inside{0};
        std::atomic<int> collisions{0};
        scriptedUnit().hook = [&](PortHandle*) {
            queryThread = QThread::currentThread();
            collisions += ++inside > 1;
            QThread::msleep(2);
            --inside;
        };
        std::vector<std::thread> pollers;
        for (int i = 0; i < 3; ++i)
            pollers.emplace_back([&] {
                for (int cycle = 0; cycle < 30; ++cycle) {
                    collector->control(1009, QString());
                    collector->poll();
                }
            });
        collector->start();
        for (std::thread& poller : pollers)
            poller.join();
        const int before = scriptedUnit().queries.load();
        collector->control(1009, QString());
        collector->poll();
        QVERIFY(scriptedUnit().queries.load() > before);
        QCOMPARE(queryThread.load(), static_cast<QThread*>(collector.get()));
        QCOMPARE(collisions.load(), 0);
    }

    void pollReturnsWhenTheThreadEnds()
    {
        auto collector = newCollector("commType=2\ninterval=0");
        for (int i = 0; i < 20; ++i) {
            scriptedUnit().queries = 0;
            collector->start();
            QTRY_VERIFY(i % 5 != 0 || scriptedUnit().queries.load() > 1); // it runs again, too
            collector->quit();
            scriptedUnit().queries = 0;
            collector->control(1009, QString());
            collector->poll(); // with or without the thread, it sees a cycle through
            QVERIFY(scriptedUnit().queries.load() > 0);
            QVERIFY(collector->wait(5000));
        }
    }
};

QTEST_GUILESS_MAIN(tst_CollectorLifetime)
#include "tst_collectorlifetime.moc"
