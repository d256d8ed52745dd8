// The host as a process, in an application folder of its own, with a plugin that needs no device.

#include "columns.h"
#include "rig.h"

#include <fcntl.h>
#include <unistd.h>

class UpsHostTest : public QObject
{
    Q_OBJECT

private slots:
    // What shows no pages needs none of Qt's platforms.
    void initTestCase() { qputenv("QT_QPA_PLATFORM", "none"); }

    void endsWhenTimeIsOver()
    {
        Rig rig;
        rig.writeUnits("[A]\nportName=none\n[silent]\nportName=none\n");
        const QByteArray text = run(rig, "--seconds 2 --units silent,A", 3);
        QCOMPARE(rig.hostErrors(),
                 QByteArray("ups-host: silent never answered; \"ups-host --check silent\" tells why\n"));
        QCOMPARE(text.count("communication established"), 1);
        QVERIFY(text.contains("silent  no answer yet"));
        QVERIFY2(text.contains("A       ") && text.contains(" 97 %"), text);
    }

    void refusesToStart_data()
    {
        const auto row = columns<QString, QByteArray>("arguments", "error");
        row("option", "--seconds=x", "--seconds x");
        row("unit", "--units=C", "unknown unit \"C\"; configured: A, B");
        row("unit of a command that does not run", "--units=A --control=B,1009,", "unknown unit \"B\"");
        row("no plugin", "--plugin=none.so", "/none.so: plugin not loaded");
        row("not a plugin", "--plugin=ups-host", "/ups-host: plugin not loaded");
    }
    void refusesToStart()
    {
        QFETCH(QString, arguments);
        QFETCH(QByteArray, error);
        Rig rig;
        rig.writeUnits("[A]\nportName=none\n[B]\nportName=none\n");
        QCOMPARE(run(rig, arguments, 2), QByteArray());
        QVERIFY2(rig.hostErrors().contains(error), rig.hostErrors());
        QCOMPARE(rig.hostErrors().count('\n'), 1);
    }

    void refusesScreenshots_data()
    {
        const auto row = columns<QString, int, QByteArray>("folder", "exitCode", "error");
        row("no folder", "/dev/null/pictures", 2, "/dev/null/pictures: the folder cannot be made");
        row("not writable", "/proc", 2, "/proc: nothing can be written there");
        row("unit without pages", ".", 4, "A has no pages");
    }
    void refusesScreenshots()
    {
        QFETCH(QString, folder);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, error);
        Rig rig;
        rig.writeUnits("[A]\nportName=none\n[B]\nportName=none\n");
        qunsetenv("QT_QPA_PLATFORM");
        run(rig, QStringLiteral("--screenshots ") + folder, exitCode);
        initTestCase();
        QVERIFY2(rig.hostErrors().contains(error), rig.hostErrors());
        QCOMPARE(rig.hostErrors().count('\n'), 1);
    }

    void secondSignalEndsItAtOnce()
    {
        Rig rig;
        rig.writeUnits("[slow]\nportName=none\n");
        rig.startHost({QStringLiteral("--plugin"), QStringLiteral(SCRIPTED_PLUGIN)});
        QTRY_VERIFY(!rig.events("slow", Restored).isEmpty());
        rig.signalHost(SIGINT);
        // The first one waits for the unit's cycle, which takes a second.
        rig.signalHost(SIGTERM);
        QVERIFY(rig.waitForHost(waitMs) > 128);
    }

    void unwritableOutputEndsIt_data()
    {
        const auto row = columns<int, QString, QByteArray, int, QByteArray>("units", "target", "error",
                                                                            "exitCode", "seen");
        row("closed", 1, "| head -n 1", "", 0, "\n");
        row("full disk", 1, "> /dev/full", "standard output: No space left", 1, "");
        row("never read", 30, "--seconds 3 > PIPE", "", 0, ""); // so many units fill it within a second
    }
    void unwritableOutputEndsIt()
    {
        QFETCH(int, units);
        QFETCH(QString, target);
        QFETCH(QByteArray, error);
        QFETCH(int, exitCode);
        Rig rig;
        QString lines;
        for (int i = 0; i < units; ++i)
            lines += QStringLiteral("[A%1]\nportName=none\n").arg(i);
        rig.writeUnits(lines);
        int ends[2]; // of a pipe that stays open and unread
        QCOMPARE(::pipe2(ends, O_CLOEXEC), 0);
        target.replace(QLatin1String("PIPE"), QStringLiteral("/proc/%1/fd/%2").arg(::getpid()).arg(ends[1]));
        QProcess shell;
        shell.setWorkingDirectory(rig.path(QString()));
        const QString command =
            QStringLiteral("set -o pipefail; ./ups-host --headless --json --plugin '%1' %2")
                .arg(QStringLiteral(SCRIPTED_PLUGIN), target);
        shell.start(QStringLiteral("bash"), {QStringLiteral("-c"), command});
        QVERIFY(shell.waitForFinished(waitMs));
        QCOMPARE(shell.exitCode(), exitCode);
        QVERIFY(shell.readAllStandardError().contains(error));
        QTEST(shell.readAllStandardOutput().right(1), "seen");
        ::close(ends[0]);
        ::close(ends[1]);
    }

private:
    static QByteArray run(Rig& rig, const Text& arguments, int expectedExitCode)
    {
        int exitCode = -1;
        const QString output =
            rig.runHost(QStringList{QStringLiteral("--headless"), QStringLiteral("--plugin"),
                                    QStringLiteral(SCRIPTED_PLUGIN)} +
                            words(arguments),
                        &exitCode);
        [&] { QCOMPARE(exitCode, expectedExitCode); }();
        return output.toUtf8();
    }
};

QTEST_GUILESS_MAIN(UpsHostTest)
#include "tst_upshost.moc"
