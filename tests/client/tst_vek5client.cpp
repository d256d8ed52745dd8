#include "portmanage.h"
#include "scriptedunit.h"
#include "testline.h"
#include "vek5client.h"

namespace {

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
    void init() { scriptedUnit().reset(); }

    void configuration()
    {
        QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/PVMX/drovaPanel/db/dev.ini"));
        vek5Client collector;
        collector.m_deviceName = QStringLiteral("%1");
        collector.loadConfig();
        QCOMPARE((QList<int>{collector.m_retryLimit, collector.m_interval, collector.m_tcpPort}),
                 (QList<int>{5, 5, 502}));
        QCOMPARE(collector.m_eventSelection.size(), 996);

        writeConfig("%251", "commType=2\nretries=2\ninterval=7\nprotocol=3\nport=1502\nipAddr=10.0.0.1\n"
                            "eventChooseList\\995=1");
        collector.loadConfig();
        QCOMPARE((QList<int>{collector.m_retryLimit, collector.m_interval, collector.m_protocol}),
                 (QList<int>{2, 7, 3}));
        QCOMPARE(collector.m_tcpPort, 1502);
        QCOMPARE(collector.m_ipAddress, QStringLiteral("10.0.0.1"));
        QCOMPARE(collector.m_eventSelection.value(995), 1);
        QCOMPARE(collector.utfToChina(QString::fromLatin1("\xc3\xa9")), QString(QChar(0xe9)));
    }

    void driverIsSharedAndFreed()
    {
        vek5Client first;
        configure(first, "commType=2\ninterval=0");
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

    void lossAndRecovery()
    {
        vek5Client collector;
        configure(collector, "commType=2\ninterval=0\nretries=3");
        EventLog log(&collector);
        scriptedUnit().answers = false;
        for (int i = 0; i < 2; ++i)
            collector.poll();
        QCOMPARE(collector.m_commState, -1);
        for (int i = 0; i < 2; ++i)
            collector.poll();
        QCOMPARE(log.types(true), QVector<int>({2007, 2007, 1041, 2001, 2007, 2007}));
        QCOMPARE(collector.m_failureCount, 4);
        QCOMPARE(log.last(1041).value(QStringLiteral("lost")), QVariant(1));
        QCOMPARE(log.last(1041), log.last(2001));

        log.clear();
        scriptedUnit().answers = true;
        for (int i = 0; i < 2; ++i)
            collector.poll();
        QCOMPARE(log.types(), QVector<int>({1040, 2001}));
        QCOMPARE(log.last(1040).keys().join(QLatin1Char(' ')),
                 QStringLiteral("desc name port protocol state timeStr"));
        QCOMPARE(log.last(1040).value(QStringLiteral("desc")), QVariant(QStringLiteral("A")));
        QCOMPARE(collector.m_failureCount, 0);
    }

    void missingPortCountsAsFailure()
    {
        vek5Client collector; // a serial unit without a manager, as the plugin instance is
        configure(collector, "interval=0\nretries=1");
        EventLog log(&collector);
        collector.control(1009, QString());
        collector.control(1018, QString());
        collector.poll();
        QCOMPARE(log.types(), QVector<int>({1041, 2001}));
        QVERIFY(scriptedUnit().commands.isEmpty());
        QCOMPARE(scriptedUnit().queries.load(), 0);
    }

    void reportOrder()
    {
        TwentyAlarms collector;
        configure(collector, "commType=2\ninterval=0");
        EventLog log(&collector);
        scriptedUnit().points = {{2003, 1.0F}, {2005, 2.0F}, {2022, 1.0F}, {2368, 1.0F}};
        collector.poll();
        QCOMPARE(log.types(true), QVector<int>({1040, 2001, 2006, 2006, 2010, 2009, 2007, 2001}));
        const auto summary = log.last(2001);
        QCOMPARE(summary.value(QStringLiteral("alarmId")), QVariant(25)); // the last change of the report
        QCOMPARE(summary.value(QStringLiteral("dis_alarm")), QVariant(1));
        QCOMPARE(summary.value(QStringLiteral("state")), QVariant(0));
        using DataMap = QMap<int, QVariant>;
        QCOMPARE(log.last(2007).value(QStringLiteral("data")).value<DataMap>().size(), 4);

        log.clear();
        scriptedUnit().points[2003] = 2.0F;
        collector.poll();
        QCOMPARE(log.types(true), QVector<int>({2006, 2007}));
        QCOMPARE(log.last(2006).value(QStringLiteral("alarmId")), QVariant(23));
        QCOMPARE(log.last(2006).value(QStringLiteral("alarmState")), QVariant(2));

        log.clear();
        scriptedUnit().answers = false; // reports go on, and old values raise no new event
        collector.poll();
        QCOMPARE(log.types(true), QVector<int>({2007}));
        QVERIFY(!collector.m_previousAlarmStates.contains(7));
    }

    void deviceInformation()
    {
        vek5Client collector;
        collector.m_manufacturer = QStringLiteral("M");
        configure(collector, "commType=2\ninterval=0\naddr=9\nportName=tty0");
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

    void commands()
    {
        vek5Client collector;
        configure(collector, "commType=2\ninterval=0");
        EventLog log(&collector);
        for (const auto& [id, value] : {std::pair(1009, ""), {1011, "2024/01/01"}, {2016, "3017,32"}})
            QCOMPARE(collector.control(id, QString::fromLatin1(value)), 1);
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

    void downloadIsReported()
    {
        writeConfig("%251", "commType=2\ninterval=0");
        vek5Client collector;
        collector.m_deviceName = QStringLiteral("%1"); // no text of a host's may be taken for a format
        collector.loadConfig();
        EventLog log(&collector);
        for (const int result : {0, 1, -7}) {
            scriptedUnit().controlResult = result;
            collector.control(1045, QString());
            collector.poll();
            const QVariantMap record = log.last(1042);
            QCOMPARE(record.value(QStringLiteral("result")), QVariant(1));
            QCOMPARE(record.value(QStringLiteral("desc")).toString(),
                     result == 0 ? QStringLiteral("%1 Download history successful")
                                 : QStringLiteral("%1 Download history failed"));
            QCOMPARE(record.keys().join(QLatin1Char(' ')),
                     QStringLiteral("controlId controlValue desc name result"));
        }
    }

    void pollKeepsTheInterval()
    {
        vek5Client collector;
        configure(collector, "commType=2\ninterval=3600");
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

    void lineIsNeverSharedByTwoQueries()
    {
        const TestLine line;
        PortManage manager;
        std::atomic<int> inside{0};
        std::atomic<int> collisions{0};
        scriptedUnit().hook = [&](PortHandle* handle) {
            collisions += ++inside > 1 || !handle->device;
            QThread::msleep(3);
            --inside;
        };
        {
            vek5Client first;
            vek5Client second;
            for (vek5Client* collector : {&first, &second}) {
                collector->setPortHandle(&manager);
                configure(*collector, "portName=line");
                collector->start();
            }
            for (int i = 0; i < 20; ++i) {
                manager.timerProc(); // the manager's tick closes the port between queries, never inside one
                QTRY_VERIFY(scriptedUnit().queries.load() > i);
            }
        }
        QCOMPARE(collisions.load(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_Vek5Client)
#include "tst_vek5client.moc"
