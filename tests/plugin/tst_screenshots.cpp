#include "rig.h"

#include <QImage>
#include <QSet>
#include <QtTest>

// The pages of the built plugin and the window of the built host, seen and used on a simulated unit, without a
// display.
class tst_Screenshots : public QObject
{
    Q_OBJECT

private slots:
    void everyPageDialogAndBoxAndTheWindow()
    {
        Rig rig;
        rig.write("scenario", "3 mains off\n6 mains on\n7 command 10\n10 command 11\n11 repeat\n");
        rig.startSerialUnitA("scenario");
        QByteArrayList files;
        QByteArray errors;
        const int exitCode = run(rig, {}, &files, &errors);
        QCOMPARE(errors, QByteArray());
        QCOMPARE(exitCode, 0);
        QCOMPARE(files.size(), 34);

        QSet<QByteArray> contents;
        for (const QByteArray& file : qAsConst(files)) {
            const QImage picture(rig.path(QString::fromLocal8Bit(file)));
            const bool isLarge = file.endsWith("-large.png") || file.contains("-window-");
            if (!file.endsWith("-2x.png"))
                QCOMPARE(picture.size(), isLarge ? QSize(1280, 800) : QSize(1024, 700));
            QSet<QRgb> colors;
            for (int y = 0; y < picture.height(); y += 3) {
                for (int x = 0; x < picture.width(); ++x)
                    colors += picture.pixel(x, y);
            }
            QVERIFY2(colors.size() > 20, file);
            contents += QByteArray(reinterpret_cast<const char*>(picture.constBits()),
                                   static_cast<int>(picture.sizeInBytes()));
        }
        QCOMPARE(contents.size(), files.size()); // no two show the same

        // The one setting that was confirmed reached the unit and left it as it was; the question was
        // declined.
        int settings = 0;
        for (const QJsonObject& action : rig.trace("trace")) {
            settings += action.contains(QStringLiteral("settings")) ? 1 : 0;
            QVERIFY(action.value(QStringLiteral("command")).toInt(-1) != 0); // self-test
        }
        QCOMPARE(settings, 1);
    }

    void saysWhichStateDidNotCome()
    {
        Rig rig;
        rig.startSerialUnitA("none");
        QByteArrayList files;
        QByteArray errors;
        QCOMPARE(run(rig, {QStringLiteral("--seconds=10")}, &files, &errors), 4);
        QVERIFY2(errors.contains("no battery supply with an alarm (point 4250 = 2) of A"), errors);
        QCOMPARE(errors.count('\n'), 1);
    }

private:
    static int run(Rig& rig, const QStringList& arguments, QByteArrayList* output, QByteArray* errors)
    {
        QProcess host;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
            environment.remove(QLatin1String(variable));
        host.setProcessEnvironment(environment);
        host.setWorkingDirectory(rig.path(QString()));
        host.start(rig.path("ups-host"),
                   QStringList{QStringLiteral("--screenshots"), QStringLiteral("new/pictures")} + arguments);
        const bool hasEnded = host.waitForFinished(90000);
        *output = host.readAllStandardOutput().split('\n');
        output->removeLast(); // behind the last line's end
        *errors = host.readAllStandardError();
        return hasEnded && host.exitStatus() == QProcess::NormalExit ? host.exitCode() : -1;
    }
};

QTEST_GUILESS_MAIN(tst_Screenshots)
#include "tst_screenshots.moc"
