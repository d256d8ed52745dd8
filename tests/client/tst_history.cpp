#include "scriptedunit.h"
#include "vek5client.h"

#include <QtTest>

#include <thread>

namespace {

const QString codeMap = QStringLiteral("PVMX/drovaPanel/db/historycodemap.csv");
const QByteArray heading("ID,Content,Status,Time,\n");

void write(const QString& name, const QByteArray& content)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray read(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

} // namespace

// The unit's history, from the driver's text file to the table that a host asked for.
class tst_History : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void rows_data();
    void rows();
    void historyIsEmptiedWhateverHappens();
    void unwritableTargetIsNamed();
    void unitsDoNotMix();

private:
    QString m_startFolder;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_History::init()
{
    m_startFolder = QDir::currentPath();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    QVERIFY(QDir().mkpath(QFileInfo(codeMap).path()));
    scriptedUnit().onControl = nullptr;
    scriptedUnit().controlResult = 0;
}

void tst_History::cleanup()
{
    QDir::setCurrent(m_startFolder);
}

void tst_History::rows_data()
{
    QTest::addColumn<QByteArray>("map");
    QTest::addColumn<QByteArray>("history");
    QTest::addColumn<QByteArray>("rows");
    const QByteArray line("12 1 24 3 5 7 8 9\n");
    const QByteArray time("2024-03-05 07:08:09,\n");
    QTest::newRow("second language") << QByteArray("12,text A,text B\n") << line
                                     << "12,text B,Appear," + time;
    QTest::newRow("falls back") << QByteArray("12, text A ,\n") << line << "12,text A,Appear," + time;
    QTest::newRow("last line of a code")
        << QByteArray("12,a,b\n,x,y\n12,c\n") << line << "12,c,Appear," + time;
    QTest::newRow("zero byte ends a line")
        << QByteArray("12,a,b\0c,d\n", 11) << line << "12,b,Appear," + time;
    QTest::newRow("code without text")
        << QByteArray() << QByteArray("77 0 24 3 5 7 8 9") << "77,77,Disappear," + time;
    QTest::newRow("unknown state") << QByteArray("12,a,b\n") << QByteArray("12 2 24 3 5 7 8 9\n")
                                   << "12,b,," + time;
    QTest::newRow("never cut") << QByteArray() << QByteArray("1 1 123 11 12 13 14 150\n")
                               << QByteArray("1,1,Appear,20123-11-12 13:14:150,\n");
    QTest::newRow("short lines") << QByteArray() << "\n1 1 24 3 5 7 8\n" + line + "\xff\xfe\n"
                                 << "12,12,Appear," + time;
    QTest::newRow("no line") << QByteArray() << QByteArray() << QByteArray();
}

void tst_History::rows()
{
    QFETCH(QByteArray, map);
    QFETCH(QByteArray, history);
    QFETCH(QByteArray, rows);
    write(codeMap, map);
    write(QStringLiteral("history.txt"), history);
    write(QStringLiteral("out.csv"), "an older and much longer export that must be gone afterwards\n");
    vek5Client collector;
    collector.exportHistoryInfo(QStringLiteral("out.csv"));
    QCOMPARE(read(QStringLiteral("out.csv")), QByteArray(heading + rows));
    QCOMPARE(read(QStringLiteral("history.txt")), QByteArray());
}

void tst_History::historyIsEmptiedWhateverHappens()
{
    vek5Client collector; // no code map either
    write(QStringLiteral("history.txt"), "12 1 24 3 5 7 8 9\n");
    collector.exportHistoryInfo(QString());
    QCOMPARE(read(QStringLiteral("history.txt")), QByteArray());
    QFile::remove(QStringLiteral("history.txt"));
    collector.exportHistoryInfo(QStringLiteral("out.csv"));
    QCOMPARE(read(QStringLiteral("out.csv")), heading);
    QCOMPARE(read(QStringLiteral("history.txt")), QByteArray());
}

void tst_History::unwritableTargetIsNamed()
{
    vek5Client collector;
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("cannot write no/such/folder\\.csv")));
    collector.exportHistoryInfo(QStringLiteral("no/such/folder.csv"));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("cannot write /dev/full")));
    collector.exportHistoryInfo(QStringLiteral("/dev/full"));
}

// Both units' drivers write the same file: from a download's first byte to its export the other one waits.
void tst_History::unitsDoNotMix()
{
    scriptedUnit().onControl = [](const QByteArray& command) {
        if (!command.startsWith("20,"))
            return;
        const QByteArray code = command.mid(3, 1); // the name of the target tells the unit
        for (int i = 0; i < 50; ++i) {
            QFile file(QStringLiteral("history.txt"));
            if (file.open(QIODevice::Append))
                file.write(code + " 1 24 3 5 7 8 9\n");
        }
    };
    writeConfig(QStringLiteral("A"), {QStringLiteral("commType=2")}); // commands go out without a port
    const auto download = [](int unit) {
        vek5Client collector;
        collector.m_deviceName = QStringLiteral("A");
        collector.loadConfig();
        for (int i = 0; i < 10; ++i) {
            const QString target = QStringLiteral("%1-%2.csv").arg(unit).arg(i);
            collector.control(1045, target);
            collector.check_set_command();
        }
    };
    std::thread other(download, 1);
    download(2);
    other.join();
    for (const int unit : {1, 2}) {
        for (int i = 0; i < 10; ++i) {
            const QByteArray row =
                QByteArray::number(unit) + ',' + QByteArray::number(unit) + ",Appear,2024-03-05 07:08:09,\n";
            QCOMPARE(read(QStringLiteral("%1-%2.csv").arg(unit).arg(i)),
                     QByteArray(heading + row.repeated(50)));
        }
    }
}

QTEST_GUILESS_MAIN(tst_History)
#include "tst_history.moc"
