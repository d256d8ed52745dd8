#include "portmanage.h"
#include "serialport.h"
#include "testfiles.h"
#include "testline.h"

#include <atomic>
#include <future>
#include <hidapi.h>

using namespace std::chrono_literals;

// Stands in for hidapi, so that the HID paths run where there is no HID hardware, as on a build machine.
// What real devices do with the calls is not shown by it.
struct HidStandIn
{
    bool present = false; ///< hid_open finds a device
    int opens = 0;        ///< attempts
    int vendorId = 0;     ///< of the last attempt
    int openNow = 0;      ///< devices open
    int nonBlocking = 0;  ///< devices set so
} hidStandIn;

struct hid_device_
{};

hid_device* hid_open(unsigned short vendorId, unsigned short, const wchar_t*)
{
    ++hidStandIn.opens;
    hidStandIn.vendorId = vendorId;
    hidStandIn.openNow += hidStandIn.present;
    return hidStandIn.present ? new hid_device : nullptr;
}

int hid_set_nonblocking(hid_device*, int nonblock)
{
    hidStandIn.nonBlocking += nonblock;
    return 0;
}

void hid_close(hid_device* device)
{
    --hidStandIn.openNow;
    delete device;
}

class TstPortManage : public QObject
{
    Q_OBJECT

    const QString m_name = QStringLiteral("line");
    std::unique_ptr<TestLine> m_line;
    std::unique_ptr<PortManage> m_manager;

private slots:
    void init()
    {
        m_line.reset();
        m_line = std::make_unique<TestLine>();
        m_manager = std::make_unique<PortManage>();
        hidStandIn = HidStandIn();
    }

    void onePortPerName()
    {
        m_manager->Close(m_name); // makes the entry
        writeFile("serial.ini", "[line]\nparam=4800,n,8,1\ntimeout=500\n");
        SerialPort* port = m_manager->getPortHandle(m_name);
        QVERIFY(port && port->isOpen());
        QCOMPARE(port->getPortSettings(), QStringLiteral("9600,n,8,1"));
        QVERIFY(m_line->speed() == B9600 && m_line->vtime() == 10);
        QCOMPARE(m_manager->ReOpen(m_name), port);
        QVERIFY(m_line->speed() == B4800 && m_line->vtime() == 5);
        writeFile("serial.ini", "[line]\nparam=nonsense\n");
        QCOMPARE(m_manager->ReOpen(m_name), port);
        QVERIFY(!port->isOpen());
        QVERIFY(m_manager->getPortHandle(m_name)->isOpen()); // with the settings that it holds
        QCOMPARE(m_line->speed(), B4800);
    }

    void iniSections()
    {
        const char* const rows[][2] = {
            {"[%1]\nparam = 4800, e,7,1\n", "4800,e,7,1"},
            {"[%1]\nparam=\"4800,e,7,1\"\n", "4800,e,7,1"},
            {"[%1]\nparam=11#2#2#0\n", "11#2#2#0"},
            {"[/%1]\nparam=4800,e,7,1\n", "9600,n,8,1"}, // with the leading "/" it is never found
        };
        const QString path = QDir::current().filePath(m_name);
        for (const auto& [ini, settings] : rows) {
            writeFile("serial.ini", QString::fromLatin1(ini).arg(path.mid(1)).toUtf8());
            QCOMPARE(PortManage().getPortHandle(path)->getPortSettings(), QString::fromLatin1(settings));
        }
    }

    void vanishedLineComesBack()
    {
        m_line->vanish();
        SerialPort* port = m_manager->getPortHandle(m_name);
        QVERIFY(port && !port->isOpen());
        char buffer[8] = {};
        for (const bool byReading : {true, false}) {
            m_line->comeBack();
            QCOMPARE(m_manager->getPortHandle(m_name), port);
            QCOMPARE(port->writeData("again", 5), 5LL);
            QCOMPARE(m_line->receive(), QByteArray("again"));
            m_line->vanish();
            QVERIFY(byReading ? port->readData(buffer, 8) <= 0 : port->writeData(buffer, 8) == -1);
            QVERIFY(!port->isOpen());
            QVERIFY(!m_manager->ReOpen(m_name)->isOpen());
        }
        QCOMPARE(port->lastError(), int(SerialPort::WriteFailed));
        m_line->comeBack();
    }

    void tickWaitsForTheQuery()
    {
        SerialPort* port = m_manager->getPortHandle(m_name);
        port->Lock();
        auto tick = std::async(std::launch::async, [&] { m_manager->timerProc(); });
        auto reopen = std::async(std::launch::async, [&] { m_manager->ReOpen(m_name); });
        QCOMPARE(tick.wait_for(100ms), std::future_status::timeout);
        QCOMPARE(reopen.wait_for(0ms), std::future_status::timeout);
        QCOMPARE(port->writeData("query", 5), 5LL);
        port->UnLock();
        tick.get();
        reopen.get();

        QVERIFY(m_manager->getPortHandle(m_name)->isOpen());
        port->m_usedFlag = 1;
        m_manager->timerProc();
        QVERIFY(port->isOpen());
        m_manager->timerProc();
        QVERIFY(!port->isOpen());
        QVERIFY(m_manager->getPortHandle(m_name) == port && port->isOpen());
    }

    // From several threads: a query has the port for itself, and nothing hangs.
    void everybodyAtOnce()
    {
        SerialPort* port = m_manager->getPortHandle(m_name);
        std::atomic<int> inside{0};
        std::atomic<int> faults{0};
        const auto query = [&] {
            for (int i = 0; i < 100; ++i) {
                faults += m_manager->getPortHandle(m_name) != port;
                port->Lock();
                faults += ++inside != 1 || (port->isOpen() && port->writeData("x", 1) != 1);
                --inside;
                port->UnLock();
            }
        };
        const auto disturb = [&] {
            for (int i = 0; i < 50; ++i) {
                m_manager->ReOpen(m_name);
                m_manager->Close(m_name);
                m_manager->timerProc();
                faults += port->getPortSettings() != QLatin1String("9600,n,8,1");
            }
        };
        {
            const std::future<void> users[] = {
                std::async(std::launch::async, query), std::async(std::launch::async, query),
                std::async(std::launch::async, disturb), std::async(std::launch::async, disturb)};
        }
        QCOMPARE(faults.load(), 0);
        QVERIFY(m_manager->getPortHandle(m_name)->isOpen());
    }

    // Against a stand-in for hidapi: there is no HID hardware here.
    void hidEntry()
    {
        CommHandle* entry = m_manager->getPortHandle(0x10001, 345);
        QVERIFY(entry && !entry->device && entry->kind == 2);
        QCOMPARE(m_manager->getPortHandle(0x10001, 345), entry);
        QCOMPARE(hidStandIn.opens, 2);
        QCOMPARE(hidStandIn.vendorId, 1);
        QVERIFY(m_manager->getPortHandle(1, 345) != entry); // the key has the whole ids

        hidStandIn.present = true;
        const void* device = m_manager->getPortHandle(0x10001, 345)->device;
        m_manager->timerProc();
        QVERIFY(device && m_manager->getPortHandle(0x10001, 345)->device == device);
        expect(QtDebugMsg, "ReOpen 0x");
        QCOMPARE(m_manager->ReOpen(0x10001, 345), entry);
        QCOMPARE(hidStandIn.nonBlocking, 2);
        m_manager->Close(0x10001, 345);
        QVERIFY(!entry->device && hidStandIn.openNow == 0);

        // Ids and port names share one table, never a device.
        m_manager->getPortHandle(7, 8);
        QVERIFY(!m_manager->getPortHandle(QStringLiteral("7.8")));
        m_manager->getPortHandle(QStringLiteral("8.9"));
        QVERIFY(!m_manager->ReOpen(8, 9)->device);
        QCOMPARE(hidStandIn.openNow, 1);
        m_manager.reset();
        QCOMPARE(hidStandIn.openNow, 0);
    }
};

QTEST_GUILESS_MAIN(TstPortManage)
#include "tst_portmanage.moc"
