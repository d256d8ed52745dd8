// The host as a process, in an application folder of its own, with a plugin that needs no device.

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

class UpsHostTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        const QString db = m_folder->filePath(QStringLiteral("PVMX/drovaPanel/db"));
        QVERIFY(QDir().mkpath(db));
        // A copy, not a link: the folder of the program's file is its application directory.
        QVERIFY(QFile::copy(QStringLiteral(UPS_HOST), m_folder->filePath(QStringLiteral("ups-host"))));
        writeUnits({QStringLiteral("A"), QStringLiteral("B")});
    }

    // What shows no pages needs none of Qt's platforms.
    void initTestCase() { qputenv("QT_QPA_PLATFORM", "none"); }

    void endsWhenTimeIsOver()
    {
        writeUnits({QStringLiteral("A"), QStringLiteral("silent")});
        start({QStringLiteral("--seconds"), QStringLiteral("2"), QStringLiteral("--units"),
               QStringLiteral("silent,A")});
        QVERIFY(waitForEnd());
        QCOMPARE(m_host.exitCode(), 3);
        QCOMPARE(m_errors,
                 QByteArray("ups-host: silent never answered; \"ups-host --check silent\" tells why\n"));
        const QByteArray text = m_host.readAllStandardOutput();
        QCOMPARE(text.count("communication established"), 1);
        QVERIFY(text.contains("silent  no answer yet"));
        QVERIFY2(text.contains("A       ") && text.contains(" 97 %"), text);
    }

    void refusesToStart_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("error");
        QTest::newRow("option") << QStringList{QStringLiteral("--seconds=x")} << QByteArray("--seconds x");
        QTest::newRow("unit") << QStringList{QStringLiteral("--units=C")}
                              << QByteArray("unknown unit \"C\"; configured: A, B");
        QTest::newRow("unit of a command that does not run")
            << QStringList{QStringLiteral("--units=A"), QStringLiteral("--control=B,1009,")}
            << QByteArray("unknown unit \"B\"");
        QTest::newRow("no plugin") << QStringList{QStringLiteral("--plugin=none.so")}
                                   << QByteArray("/none.so: plugin not loaded");
        QTest::newRow("not a plugin")
            << QStringList{QStringLiteral("--plugin=ups-host")} << QByteArray("/ups-host: plugin not loaded");
    }
    void refusesToStart()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, error);
        start(arguments);
        QVERIFY(waitForEnd());
        QCOMPARE(m_host.exitCode(), 2);
        QCOMPARE(m_host.readAllStandardOutput(), QByteArray());
        QVERIFY2(m_errors.contains(error), m_errors);
        QCOMPARE(m_errors.count('\n'), 1);
    }

    void refusesScreenshots_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("error");
        QTest::newRow("no folder") << QStringLiteral("/dev/null/pictures") << 2
                                   << QByteArray("/dev/null/pictures: the folder cannot be made");
        QTest::newRow("not writable")
            << QStringLiteral("/proc") << 2 << QByteArray("/proc: nothing can be written there");
        QTest::newRow("unit without pages") << QStringLiteral(".") << 4 << QByteArray("A has no pages");
    }
    void refusesScreenshots()
    {
        QFETCH(QString, folder);
        QFETCH(QByteArray, error);
        qunsetenv("QT_QPA_PLATFORM");
        start({QStringLiteral("--screenshots"), folder});
        initTestCase();
        QVERIFY(waitForEnd());
        QTEST(m_host.exitCode(), "exitCode");
        QVERIFY2(m_errors.contains(error), m_errors);
        QCOMPARE(m_errors.count('\n'), 1);
    }

    void signalEndsIt_data()
    {
        QTest::addColumn<bool>("isPolling");
        QTest::newRow("own threads") << false;
        QTest::newRow("polled") << true;
    }
    void signalEndsIt()
    {
        QFETCH(bool, isPolling);
        start(isPolling ? QStringList{QStringLiteral("--poll")} : QStringList());
        QTRY_VERIFY(outputSoFar().count("communication established") == 2);
        m_host.terminate();
        QVERIFY(waitForEnd());
        QCOMPARE(m_host.exitCode(), 0);
    }

    void secondSignalEndsItAtOnce()
    {
        writeUnits({QStringLiteral("slow")});
        start({});
        QTRY_VERIFY(outputSoFar().contains("communication established"));
        ::kill(static_cast<pid_t>(m_host.processId()), SIGINT);
        // The first one waits for the unit's cycle, which takes a second.
        ::kill(static_cast<pid_t>(m_host.processId()), SIGTERM);
        QVERIFY(waitForEnd());
        QVERIFY(m_host.exitCode() > 128);
    }

    void sendsCommandsOnceUnitCommunicates()
    {
        start({QStringLiteral("--json"), QStringLiteral("--control=B,2016,3000,5"),
               QStringLiteral("--control=B,1009,"), QStringLiteral("--verbose")});
        QTRY_COMPARE(outputSoFar().count("\"type\":1042"), 2);
        m_host.terminate();
        QVERIFY(waitForEnd());
        QByteArrayList results;
        const QByteArrayList lines = outputSoFar().trimmed().split('\n');
        for (const QByteArray& line : lines) {
            const QJsonObject event = QJsonDocument::fromJson(line).object();
            QVERIFY2(event.contains(QLatin1String("record")), line);
            if (event[QLatin1String("type")].toInt() != 1042)
                continue;
            QCOMPARE(event[QLatin1String("unit")].toString(), QStringLiteral("B"));
            results += event[QLatin1String("record")].toObject()[QLatin1String("desc")].toString().toUtf8();
        }
        QCOMPARE(results, QByteArrayList({"2016=3000,5", "1009="}));
    }

    void closedOutputEndsIt()
    {
        writeUnits({QStringLiteral("A")});
        m_host.setWorkingDirectory(m_folder->path());
        const QString command = QStringLiteral("set -o pipefail; ./ups-host --json --plugin '%1' | head -n 1")
                                    .arg(QStringLiteral(SCRIPTED_PLUGIN));
        m_host.start(QStringLiteral("bash"), {QStringLiteral("-c"), command});
        QVERIFY(waitForEnd());
        QCOMPARE(m_host.exitCode(), 0);
        QCOMPARE(outputSoFar().count('\n'), 1);
    }

    void fullDiskEndsIt()
    {
        m_host.setStandardOutputFile(QStringLiteral("/dev/full"));
        start({});
        QVERIFY(waitForEnd());
        m_host.setStandardOutputFile(QString());
        QCOMPARE(m_host.exitCode(), 1);
        QVERIFY(m_errors.contains("standard output: No space left"));
    }

    void cleanup()
    {
        if (QTest::currentTestFailed())
            qInfo("standard error was: %s", m_errors.constData());
        m_host.kill();
        m_host.waitForFinished();
        m_output.clear();
    }

private:
    void writeUnits(const QStringList& names)
    {
        QFile file(m_folder->filePath(QStringLiteral("PVMX/drovaPanel/db/dev.ini")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (const QString& name : names)
            file.write("[" + name.toLatin1() + "]\nportName=none\n");
    }

    void start(const QStringList& arguments)
    {
        QStringList all{QStringLiteral("--headless"), QStringLiteral("--plugin"),
                        QStringLiteral(SCRIPTED_PLUGIN)};
        all += arguments;
        m_host.setWorkingDirectory(m_folder->path());
        m_host.start(m_folder->filePath(QStringLiteral("ups-host")), all);
    }

    bool waitForEnd()
    {
        const bool hasEnded = m_host.waitForFinished(20000);
        m_errors = m_host.readAllStandardError();
        return hasEnded;
    }

    QByteArray outputSoFar()
    {
        m_output += m_host.readAllStandardOutput();
        return m_output;
    }

    QScopedPointer<QTemporaryDir> m_folder;
    QProcess m_host;
    QByteArray m_output;
    QByteArray m_errors;
};

QTEST_GUILESS_MAIN(UpsHostTest)
#include "tst_upshost.moc"
