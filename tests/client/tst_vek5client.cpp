#include "scriptedunit.h"
#include "vek5client.h"

#include "portmanage.h"
#include "serialport.h"

#include <QtTest>

#include <pty.h>
#include <unistd.h>

namespace {

// A communication type that is neither a serial line nor TCP: the driver is called with no device, which
// makes cycles testable without either.
const QString noPort = QStringLiteral("commType=2");

// A collector with few events, as the catalogue is an operation of its own.
class TwentyAlarms : public vek5Client
{
public:
    QStringList getEventLogDesc() override { return QVector<QString>(40).toList(); }
};

} // namespace

// One collector, cycle by cycle, against a scripted driver.
class tst_Vek5Client : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void configuration();
    void driverIsSharedAndFreed();
    void lossAndRecovery();
    void missingPortOrDriverCountsAsFailure();
    void reportOrder();
    void deviceInformation();
    void commands();
    void closePortEndsTheRun();
    void downloadIsReported();
    void pollKeepsTheInterval();
    void lineIsNeverSharedByTwoQueries();
};

void tst_Vek5Client::init()
{
    ScriptedUnit& unit = scriptedUnit();
    unit.answers = true;
    unit.controlResult = 0;
    unit.points.clear();
    unit.hook = nullptr;
    unit.queries = 0;
    unit.commands.clear();
}

void tst_Vek5Client::configuration()
{
    QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/PVMX/drovaPanel/db/dev.ini"));
    vek5Client collector;
    collector.m_deviceName = QStringLiteral("%1");
    collector.loadConfig();
    QCOMPARE(collector.m_retryLimit, 5);
    QCOMPARE(collector.m_interval, 5);
    QCOMPARE(collector.m_tcpPort, 502);
    QCOMPARE(collector.m_eventSelection.size(), 996);

    writeConfig(QStringLiteral("%251"),
                {noPort, QStringLiteral("retries=2"), QStringLiteral("interval=7"),
                 QStringLiteral("protocol=3"), QStringLiteral("port=1502"), QStringLiteral("ipAddr=10.0.0.1"),
                 QStringLiteral("eventChooseList\\995=1")});
    collector.loadConfig();
    QCOMPARE(collector.m_retryLimit, 2);
    QCOMPARE(collector.m_interval, 7);
    QCOMPARE(collector.m_protocol, 3);
    QCOMPARE(collector.m_tcpPort, 1502);
    QCOMPARE(collector.m_ipAddress, QStringLiteral("10.0.0.1"));
    QCOMPARE(collector.m_eventSelection.value(995), 1);
    QCOMPARE(collector.utfToChina(QString::fromLatin1("\xc3\xa9")), QString(QChar(0xe9)));
}

void tst_Vek5Client::driverIsSharedAndFreed()
{
    writeConfig(QStringLiteral("A"), {noPort, QStringLiteral("interval=0")});
    vek5Client first;
    first.m_deviceName = QStringLiteral("A");
    first.loadConfig();
    QVERIFY(first.LoadDriver());
    {
        vek5Client second;
        QVERIFY(second.FreeDriver());
    }
    first.poll();
    QCOMPARE(scriptedUnit().queries.load(), 1);
    QVERIFY(first.FreeDriver());
    first.poll();
    QCOMPARE(scriptedUnit().queries.load(), 1);
    QCOMPARE(first.m_failureCount, 1);
}

void tst_Vek5Client::lossAndRecovery()
{
    writeConfig(QStringLiteral("A"), {noPort, QStringLiteral("interval=0"), QStringLiteral("retries=3")});
    vek5Client collector;
    collector.m_deviceName = QStringLiteral("A");
    collector.loadConfig();
    EventLog log(&collector);

    scriptedUnit().answers = false;
    for (int i = 0; i < 2; ++i)
        collector.poll();
    QCOMPARE(log.types(true), QVector<int>({2007, 2007}));
    QCOMPARE(collector.m_commState, -1);
    collector.poll();
    collector.poll();
    QCOMPARE(log.types(true), QVector<int>({2007, 2007, 1041, 2001, 2007, 2007}));
    QCOMPARE(collector.m_failureCount, 4);
    QCOMPARE(log.last(1041).record.value(QStringLiteral("lost")), QVariant(1));
    QCOMPARE(log.last(1041).record, log.last(2001).record);

    log.clear();
    scriptedUnit().answers = true;
    collector.poll();
    collector.poll();
    QCOMPARE(log.types(), QVector<int>({1040, 2001}));
    const auto record = log.last(1040).record;
    QCOMPARE(record.keys(),
             QStringList({QStringLiteral("desc"), QStringLiteral("name"), QStringLiteral("port"),
                          QStringLiteral("protocol"), QStringLiteral("state"), QStringLiteral("timeStr")}));
    QCOMPARE(record.value(QStringLiteral("desc")), QVariant(QStringLiteral("A")));
    QCOMPARE(collector.m_failureCount, 0);
}

void tst_Vek5Client::missingPortOrDriverCountsAsFailure()
{
    writeConfig(QStringLiteral("A"), {QStringLiteral("interval=0"), QStringLiteral("retries=1")});
    vek5Client collector; // a serial unit without a manager, as the plugin instance is
    collector.m_deviceName = QStringLiteral("A");
    collector.loadConfig();
    EventLog log(&collector);
    collector.control(1009, QString());
    collector.control(1018, QString());
    collector.poll();
    QCOMPARE(log.types(), QVector<int>({1041, 2001}));
    QVERIFY(scriptedUnit().commands.isEmpty());
    QCOMPARE(scriptedUnit().queries.load(), 0);
}

void tst_Vek5Client::reportOrder()
{
    writeConfig(QStringLiteral("A"), {noPort, QStringLiteral("interval=0")});
    TwentyAlarms collector;
    collector.m_deviceName = QStringLiteral("A");
    collector.loadConfig();
    EventLog log(&collector);

    scriptedUnit().points = {{2003, 1.0F}, {2005, 2.0F}, {2022, 1.0F}, {2368, 1.0F}};
    collector.poll();
    QCOMPARE(log.types(true), QVector<int>({1040, 2001, 2006, 2006, 2010, 2009, 2007, 2001}));
    const auto summary = log.last(2001).record;
    QCOMPARE(summary.value(QStringLiteral("alarmId")), QVariant(25)); // the last change of the report
    QCOMPARE(summary.value(QStringLiteral("dis_alarm")), QVariant(1));
    QCOMPARE(summary.value(QStringLiteral("state")), QVariant(0));
    using DataMap = QMap<int, QVariant>;
    QCOMPARE(log.last(2007).record.value(QStringLiteral("data")).value<DataMap>().size(), 4);

    log.clear();
    scriptedUnit().points[2003] = 2.0F;
    collector.poll();
    QCOMPARE(log.types(true), QVector<int>({2006, 2007}));
    QCOMPARE(log.last(2006).record.value(QStringLiteral("alarmId")), QVariant(23));
    QCOMPARE(log.last(2006).record.value(QStringLiteral("alarmState")), QVariant(2));

    log.clear();
    scriptedUnit().answers = false; // reports go on, and old values raise no new event
    collector.poll();
    QCOMPARE(log.types(true), QVector<int>({2007}));
    QVERIFY(!collector.m_previousAlarmStates.contains(7));
}

void tst_Vek5Client::deviceInformation()
{
    writeConfig(QStringLiteral("A"), {noPort, QStringLiteral("interval=0"), QStringLiteral("addr=9"),
                                      QStringLiteral("portName=tty0")});
    vek5Client collector;
    collector.m_deviceName = QStringLiteral("A");
    collector.m_manufacturer = QStringLiteral("M");
    collector.loadConfig();
    scriptedUnit().points = {{4016, 65.0F}, {4017, 66.0F}, {4018, 323.0F}, {4184, 41.6F}};
    collector.poll();
    const auto info = collector.m_deviceInfo;
    QCOMPARE(info.value(QStringLiteral("upsIdentModel")).toByteArray(),
             QByteArray("ABC") + QByteArray(13, '\0'));
    QCOMPARE(info.value(QStringLiteral("upsLoad")), QVariant(42));
    QCOMPARE(info.value(QStringLiteral("upsAddr")), QVariant(QStringLiteral("9")));
    QCOMPARE(info.value(QStringLiteral("portInfo")), QVariant(QStringLiteral("tty0-")));
    QCOMPARE(info.value(QStringLiteral("state")), QVariant(0));
    QCOMPARE(info.value(QStringLiteral("IdentManufacturer")), QVariant(QStringLiteral("M")));
    QCOMPARE(info.value(QStringLiteral("4184")), QVariant(41.6F));
}

void tst_Vek5Client::commands()
{
    writeConfig(QStringLiteral("A"), {noPort, QStringLiteral("interval=0")});
    vek5Client collector;
    collector.m_deviceName = QStringLiteral("A");
    collector.loadConfig();
    EventLog log(&collector);
    QCOMPARE(collector.control(1009, QString()), 1);
    collector.control(1011, QStringLiteral("2024/01/01"));
    collector.control(2016, QStringLiteral("3017,32"));
    scriptedUnit().controlResult = 1;
    scriptedUnit().hook = [&](PortHandle* handle) {
        QVERIFY(!handle->device);
        if (scriptedUnit().queries.load() == 1)
            collector.control(1010, QString()); // queued by a host while the cycle runs
    };
    collector.poll();
    QCOMPARE(scriptedUnit().commands, QByteArrayList({"17,", "3017,32"}));
    collector.poll();
    QCOMPARE(scriptedUnit().commands, QByteArrayList({"17,", "3017,32", "18,"}));
    QCOMPARE(log.types(), QVector<int>({1040, 2001})); // a failed command raises no event
}

void tst_Vek5Client::closePortEndsTheRun()
{
    writeConfig(QStringLiteral("A"), {noPort, QStringLiteral("interval=0")});
    vek5Client collector;
    collector.m_deviceName = QStringLiteral("A");
    collector.loadConfig();
    collector.control(1018, QString());
    collector.control(1009, QString());
    collector.poll();
    QVERIFY(scriptedUnit().commands.isEmpty());
    QCOMPARE(scriptedUnit().queries.load(), 1);
    collector.poll();
    QCOMPARE(scriptedUnit().commands, QByteArrayList({"17,"}));
}

void tst_Vek5Client::downloadIsReported()
{
    writeConfig(QStringLiteral("%251"), {noPort, QStringLiteral("interval=0")});
    vek5Client collector;
    collector.m_deviceName = QStringLiteral("%1");
    collector.loadConfig();
    EventLog log(&collector);
    for (const int result : {0, 1, -7}) {
        scriptedUnit().controlResult = result;
        collector.control(1045, QString());
        collector.poll();
        const auto record = log.last(1042).record;
        QCOMPARE(record.value(QStringLiteral("result")), QVariant(1));
        QCOMPARE(record.value(QStringLiteral("desc")).toString(),
                 result == 0 ? QStringLiteral("%1 Download history successful")
                             : QStringLiteral("%1 Download history failed"));
        QCOMPARE(record.keys(),
                 QStringList({QStringLiteral("controlId"), QStringLiteral("controlValue"),
                              QStringLiteral("desc"), QStringLiteral("name"), QStringLiteral("result")}));
    }
}

void tst_Vek5Client::pollKeepsTheInterval()
{
    writeConfig(QStringLiteral("A"), {noPort, QStringLiteral("interval=3600")});
    vek5Client collector;
    collector.m_deviceName = QStringLiteral("A");
    collector.loadConfig();
    int workState = -1;
    scriptedUnit().hook = [&](PortHandle*) {
        workState = collector.getWorkState();
        collector.poll(); // from inside a cycle: refused, or it would never end
    };
    collector.poll();
    collector.poll();
    QCOMPARE(scriptedUnit().queries.load(), 1);
    QCOMPARE(workState, 1);
    QCOMPARE(collector.getWorkState(), 0);
    collector.control(1009, QString());
    collector.poll();
    QCOMPARE(scriptedUnit().queries.load(), 2);
}

void tst_Vek5Client::lineIsNeverSharedByTwoQueries()
{
    QTemporaryDir folder;
    int master = -1;
    int slave = -1;
    char device[128];
    QCOMPARE(::openpty(&master, &slave, device, nullptr, nullptr), 0);
    const QString startFolder = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path())); // the traffic log goes there
    writeConfig(QStringLiteral("A"), {QStringLiteral("portName=") + QString::fromLocal8Bit(device)});

    PortManage manager;
    std::atomic<int> inside{0};
    std::atomic<int> collisions{0};
    scriptedUnit().hook = [&](PortHandle* handle) {
        if (++inside > 1 || !handle->device)
            ++collisions;
        QThread::msleep(3);
        --inside;
    };
    {
        vek5Client first;
        vek5Client second;
        for (vek5Client* collector : {&first, &second}) {
            collector->setPortHandle(&manager);
            collector->m_deviceName = QStringLiteral("A");
            collector->loadConfig();
            collector->start();
        }
        for (int i = 0; i < 20; ++i) {
            manager.timerProc(); // the manager's tick closes the port between queries, never inside one
            QTRY_VERIFY(scriptedUnit().queries.load() > i);
        }
    }
    QCOMPARE(collisions.load(), 0);
    QDir::setCurrent(startFolder);
    ::close(master);
    ::close(slave);
}

QTEST_GUILESS_MAIN(tst_Vek5Client)
#include "tst_vek5client.moc"
