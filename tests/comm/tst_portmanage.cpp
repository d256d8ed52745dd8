#include "hidstandin.h"
#include "portmanage.h"
#include "serialport.h"
#include "testline.h"

#include <QTemporaryDir>

#include <atomic>
#include <future>
#include <vector>

class TstPortManage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void onePortPerName();
    void iniSection_data();
    void iniSection();
    void closeOfAnUnknownName();
    void missingLineComesBack();
    void vanishedLineComesBack();
    void tickWaitsForTheQuery();
    void everybodyAtOnce();
    void oneInstance();
    void hidEntry();

private:
    static void writeIni(const QByteArray& content) { writeFile(QStringLiteral("serial.ini"), content); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TestLine> m_line;
};

void TstPortManage::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir::setCurrent(m_dir->path()));
    m_line = std::make_unique<TestLine>();
    hidStandIn() = HidStandIn();
}

void TstPortManage::cleanup()
{
    m_line.reset();
}

void TstPortManage::onePortPerName()
{
    PortManage manager;
    SerialPort* port = manager.getPortHandle(TestLine::name());
    QVERIFY(port && port->isOpen());
    QCOMPARE(port->getPortSettings(), QStringLiteral("9600,n,8,1"));
    QCOMPARE(m_line->speed(), B9600);
    QCOMPARE(int(m_line->attributes().c_cc[VTIME]), 10);

    writeIni("[line]\nparam=4800,n,8,1\ntimeout=500\n");
    QCOMPARE(manager.getPortHandle(TestLine::name()), port);
    QCOMPARE(m_line->speed(), B9600);
    QCOMPARE(manager.ReOpen(TestLine::name()), port);
    QCOMPARE(m_line->speed(), B4800);
    QCOMPARE(int(m_line->attributes().c_cc[VTIME]), 5);

    writeIni("[line]\nparam=nonsense\n");
    QCOMPARE(manager.ReOpen(TestLine::name()), port);
    QVERIFY(!port->isOpen());
    QVERIFY(manager.getPortHandle(TestLine::name())->isOpen()); // with the settings that it holds
    QCOMPARE(m_line->speed(), B4800);
}

void TstPortManage::iniSection_data()
{
    QTest::addColumn<QByteArray>("ini"); // PATH stands for the line's path without the leading "/"
    QTest::addColumn<QString>("settings");
    QTest::newRow("without quotes") << QByteArray("[PATH]\nparam=4800,e,7,1\n")
                                    << QStringLiteral("4800,e,7,1");
    QTest::newRow("blanks") << QByteArray("[PATH]\nparam = 4800, e, 7, 1\n") << QStringLiteral("4800,e,7,1");
    QTest::newRow("quotes") << QByteArray("[PATH]\nparam=\"4800,e,7,1\"\n") << QStringLiteral("4800,e,7,1");
    QTest::newRow("numbers") << QByteArray("[PATH]\nparam=11#2#2#0\n") << QStringLiteral("11#2#2#0");
    QTest::newRow("with the slash") << QByteArray("[/PATH]\nparam=4800,e,7,1\n")
                                    << QStringLiteral("9600,n,8,1");
}

void TstPortManage::iniSection()
{
    QFETCH(QByteArray, ini);
    const QString path = QDir::current().filePath(TestLine::name());
    writeIni(ini.replace("PATH", path.mid(1).toUtf8()));
    PortManage manager;
    QTEST(manager.getPortHandle(path)->getPortSettings(), "settings");
}

void TstPortManage::closeOfAnUnknownName()
{
    writeIni("[line]\nparam=4800,n,8,1\n");
    PortManage manager;
    manager.Close(TestLine::name());
    QCOMPARE(m_line->speed(), B4800);
    writeIni("[line]\nparam=19200,n,8,1\n");
    SerialPort* port = manager.getPortHandle(TestLine::name());
    QVERIFY(port->isOpen());
    QCOMPARE(m_line->speed(), B4800); // the entry made by Close, not a new one
}

void TstPortManage::missingLineComesBack()
{
    m_line.reset();
    PortManage manager;
    SerialPort* port = manager.getPortHandle(TestLine::name());
    QVERIFY(port && !port->isOpen());
    QVERIFY(!manager.ReOpen(TestLine::name())->isOpen());
    m_line = std::make_unique<TestLine>();
    QCOMPARE(manager.getPortHandle(TestLine::name()), port);
    QVERIFY(port->isOpen());
}

void TstPortManage::vanishedLineComesBack()
{
    PortManage manager;
    SerialPort* port = manager.getPortHandle(TestLine::name());
    m_line.reset();
    char buffer[8] = {};
    QCOMPARE(port->writeData(buffer, 8), -1LL);
    QVERIFY(!manager.getPortHandle(TestLine::name())->isOpen());
    m_line = std::make_unique<TestLine>();
    QVERIFY(manager.getPortHandle(TestLine::name())->isOpen());
    QCOMPARE(port->writeData("again", 5), 5LL);
    QCOMPARE(m_line->receive(5), QByteArray("again"));
}

void TstPortManage::tickWaitsForTheQuery()
{
    PortManage manager;
    manager.getPortHandle(1, 2);
    SerialPort* port = manager.getPortHandle(TestLine::name());
    port->Lock();
    auto tick = std::async(std::launch::async, [&] { manager.timerProc(); });
    auto reopen = std::async(std::launch::async, [&] { manager.ReOpen(TestLine::name()); });
    QCOMPARE(tick.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    QCOMPARE(reopen.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
    QCOMPARE(port->writeData("query", 5), 5LL);
    port->UnLock();
    tick.get();
    reopen.get();

    QVERIFY(manager.getPortHandle(TestLine::name())->isOpen());
    port->m_usedFlag = 1;
    manager.timerProc();
    QVERIFY(port->isOpen());
    QCOMPARE(port->m_usedFlag, 0);
    manager.timerProc();
    QVERIFY(!port->isOpen());
    QCOMPARE(manager.getPortHandle(TestLine::name()), port);
    QVERIFY(port->isOpen());
}

// Queries, re-opens, closes and ticks from several threads: a query has the port for itself, and nothing
// hangs.
void TstPortManage::everybodyAtOnce()
{
    Messages messages; // hundreds of them
    PortManage manager;
    SerialPort* port = manager.getPortHandle(TestLine::name());
    std::atomic<int> inside{0};
    std::atomic<int> faults{0};
    const auto query = [&] {
        for (int i = 0; i < 100; ++i) {
            SerialPort* mine = manager.getPortHandle(TestLine::name());
            mine->Lock();
            const bool open = mine->isOpen();
            if (mine != port || ++inside != 1 || (open && mine->writeData("x", 1) != 1) ||
                mine->isOpen() != open)
                ++faults;
            --inside;
            mine->UnLock();
        }
    };
    const auto disturb = [&] {
        for (int i = 0; i < 50; ++i) {
            manager.ReOpen(TestLine::name());
            manager.Close(TestLine::name());
            manager.timerProc();
            if (port->getPortSettings() != QLatin1String("9600,n,8,1"))
                ++faults;
        }
    };
    {
        std::vector<std::future<void>> users;
        for (int i = 0; i < 2; ++i) {
            users.push_back(std::async(std::launch::async, query));
            users.push_back(std::async(std::launch::async, disturb));
        }
    }
    QCOMPARE(faults.load(), 0);
    QVERIFY(manager.getPortHandle(TestLine::name())->isOpen());
}

void TstPortManage::oneInstance()
{
    PortManage* manager = PortManage::instance();
    auto other = std::async(std::launch::async, &PortManage::instance);
    QCOMPARE(other.get(), manager);
    delete manager;
    // A deleted one is never handed out again.
    const std::unique_ptr<PortManage> next(PortManage::instance());
    QVERIFY(next->getPortHandle(TestLine::name())->isOpen());
}

void TstPortManage::hidEntry()
{
    HidStandIn& hid = hidStandIn();
    auto manager = std::make_unique<PortManage>();
    CommHandle* entry = manager->getPortHandle(0x10001, 345);
    QVERIFY(entry && !entry->device);
    QCOMPARE(int(entry->kind), 2);
    QCOMPARE(manager->getPortHandle(0x10001, 345), entry);
    QCOMPARE(hid.opens, 2);
    QCOMPARE(hid.vendorId, 1);
    QVERIFY(manager->getPortHandle(1, 345) != entry); // the key has the whole ids

    hid.present = true;
    void* device = manager->getPortHandle(0x10001, 345)->device;
    QVERIFY(device);
    manager->timerProc();
    QCOMPARE(manager->getPortHandle(0x10001, 345)->device, device);
    QCOMPARE(hid.nonBlocking, 1);
    {
        Messages messages;
        QCOMPARE(manager->ReOpen(0x10001, 345), entry);
        QVERIFY(messages.taken().value(0).startsWith(QLatin1String("D: ReOpen 0x")));
    }
    QCOMPARE(hid.nonBlocking, 2);
    manager->Close(0x10001, 345);
    QCOMPARE(hid.openNow, 0);
    QVERIFY(!entry->device);

    // Ids and port names share one table, never a device.
    manager->getPortHandle(7, 8);
    QVERIFY(!manager->getPortHandle(QStringLiteral("7.8")));
    manager->getPortHandle(QStringLiteral("8.9"));
    QVERIFY(!manager->ReOpen(8, 9)->device);
    QCOMPARE(hid.openNow, 1);
    manager.reset();
    QCOMPARE(hid.openNow, 0);
}

QTEST_GUILESS_MAIN(TstPortManage)
#include "tst_portmanage.moc"
