// Where an installed host works, and what relative paths mean to it.

#include "columns.h"
#include "hostoptions.h"
#include "rig.h"
#include "testfiles.h"

class DataFolderTest : public QObject
{
    Q_OBJECT

private slots:
    void pathsOfTheCaller()
    {
        const HostOptions named =
            parse("--headless --plugin p.so --journal ../j --control A,1045,h.csv --control A,2016,h.csv");
        QCOMPARE(named.pluginFile, QStringLiteral("/caller/p.so"));
        QCOMPARE(QDir::cleanPath(named.journalFile), QStringLiteral("/j"));
        QCOMPARE(named.controls.at(0).value, QStringLiteral("/caller/h.csv"));
        QCOMPARE(named.controls.at(1).value, QStringLiteral("h.csv"));
        QCOMPARE(parse("--screenshots s").screenshotFolder, QStringLiteral("/caller/s"));
    }

    // What the host names itself stays where the host works.
    void wordsThatAreNoPaths()
    {
        const HostOptions exported = parse("--export-events - --export-log /l.csv");
        QCOMPARE(exported.exports.eventsFile, QStringLiteral("-"));
        QCOMPARE(exported.exports.logFile, QStringLiteral("/l.csv"));
        QCOMPARE(exported.journalFile, QStringLiteral("journal.sqlite"));
        QCOMPARE(parse("--journal none").journalFile, QString());
        QCOMPARE(parse("--headless --control A,1045,").controls.at(0).value, QString());
    }

    void worksInTheUsersFolder()
    {
        Rig rig;
        install(rig);
        rig.write("PVMX/serial.ini", "[line]\nparam=nonsense\n");
        QVERIFY(run(rig).contains("param=nonsense")); // the machine's

        // A user's own file stays; a link that leads nowhere does not.
        const QString data = rig.path("data/ups-host/");
        QVERIFY(QFile::remove(data + QStringLiteral("serial.ini")));
        rig.write("data/ups-host/serial.ini", "[line]\nparam=mine\n");
        QVERIFY(QFile::remove(data + QStringLiteral("PVMX")));
        QVERIFY(QFile::link(QStringLiteral("/nowhere"), data + QStringLiteral("PVMX")));
        QVERIFY(run(rig).contains("param=mine"));
        QCOMPARE(contentOf(data + QStringLiteral("PVMX/serial.ini")), contentOf(rig.path("PVMX/serial.ini")));
    }

    void folderCannotBeMade()
    {
        Rig rig;
        install(rig);
        rig.write("data", "a file");
        QVERIFY(run(rig).contains("data/ups-host: the data folder cannot be used: set XDG_DATA_HOME"));
    }

private:
    static HostOptions parse(const char* arguments)
    {
        const ParsedOptions parsed = parseOptions(
            words(QStringLiteral("ups-host ") + QLatin1String(arguments)), QStringLiteral("/caller"));
        [&] { QCOMPARE(parsed.error, QString()); }();
        return parsed.options;
    }
    static void install(Rig& rig)
    {
        rig.write("installed", "");
        rig.writeUnits("[A]\nportName=line\n");
        qputenv("XDG_DATA_HOME", QFile::encodeName(rig.path("data")));
    }
    /// Runs the host, which finds something wrong before it starts; returns what it said.
    static QByteArray run(Rig& rig)
    {
        const QByteArray before = rig.hostErrors();
        int exitCode = -1;
        rig.runHost({QStringLiteral("--headless")}, &exitCode);
        [&] { QCOMPARE(exitCode, 2); }();
        return rig.hostErrors().mid(before.size());
    }
};

QTEST_GUILESS_MAIN(DataFolderTest)
#include "tst_datafolder.moc"
