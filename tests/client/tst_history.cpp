#include "columns.h"
#include "scriptedunit.h"
#include "testfiles.h"
#include "vek5client.h"

// The unit's history, from the driver's text file to the table that a host asked for.
class tst_History : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(m_folder->path()));
        QVERIFY(QDir().mkpath(QStringLiteral("PVMX/drovaPanel/db")));
    }
    void cleanup() { QDir::setCurrent(QCoreApplication::applicationDirPath()); }

    void rows_data()
    {
        const auto row = columns<QByteArray, QByteArray, QByteArray>("map", "history", "rows");
        const QByteArray line("12 1 24 3 5 7 8 9\n");
        const QByteArray time("2024-03-05 07:08:09,\n");
        row("second language", "12,text A,text B\n", line, "12,text B,Appear," + time);
        row("falls back", "12, text A ,\n", line, "12,text A,Appear," + time);
        row("last line of a code", "12,a,b\n,x,y\n12,c\n", line, "12,c,Appear," + time);
        row("zero byte ends a line", QByteArray("12,a,b\0c,d\n", 11), line, "12,b,Appear," + time);
        row("code without text", "", "77 0 24 3 5 7 8 9", "77,77,Disappear," + time);
        row("unknown state", "12,a,b\n", "12 2 24 3 5 7 8 9\n", "12,b,," + time);
        row("never cut", "", "1 1 123 11 12 13 14 150\n", "1,1,Appear,20123-11-12 13:14:150,\n");
        row("short lines", "", "\n1 1 24 3 5 7 8\n" + line + "\xff\xfe\n", "12,12,Appear," + time);
        row("no line", "", "", "");
        row("no file", "", QByteArray(), "");
    }
    void rows()
    {
        QFETCH(QByteArray, map);
        QFETCH(QByteArray, history);
        QFETCH(QByteArray, rows);
        writeFile("PVMX/drovaPanel/db/historycodemap.csv", map);
        if (!history.isNull())
            writeFile("history.txt", history);
        writeFile("out.csv", "an older and much longer export that must be gone afterwards\n");
        vek5Client collector;
        collector.exportHistoryInfo(QStringLiteral("out.csv"));
        QCOMPARE(contentOf("out.csv"), QByteArray("ID,Content,Status,Time,\n" + rows));
        QCOMPARE(contentOf("history.txt"), QByteArray());
    }

    void historyIsEmptiedWhateverHappens()
    {
        vek5Client collector; // without a code map
        for (const char* target : {"", "no/such/folder.csv", "/dev/full"}) {
            writeFile("history.txt", "12 1 24 3 5 7 8 9\n");
            if (*target)
                QTest::ignoreMessage(
                    QtDebugMsg, QRegularExpression(QStringLiteral("cannot write ") + QLatin1String(target)));
            collector.exportHistoryInfo(QString::fromLatin1(target));
            QCOMPARE(contentOf("history.txt"), QByteArray());
        }
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(tst_History)
#include "tst_history.moc"
