// The journal's writer is killed at random moments, again and again on the same file.

#include "journalreading.h"

#include <QDateTime>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

class JournalCrashTest : public QObject
{
    Q_OBJECT

private slots:
    void losesAtMostTheLastSecond()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("journal.sqlite"));
        int nextNumber = 0;
        for (int round = 0; round < ROUNDS; ++round) {
            const int lastSafe = writeAndKill(file, nextNumber);
            // Read first as an export after the crash would, before any writer has repaired anything.
            QCOMPARE(readColumn(file, QStringLiteral("PRAGMA integrity_check")),
                     QStringList(QStringLiteral("ok")));
            const QStringList codes = readColumn(file, QStringLiteral("SELECT code FROM event ORDER BY id"));
            for (int i = 0; i < codes.size(); ++i)
                QCOMPARE(codes[i].toInt(), i); // in order, each once, no gap
            QVERIFY2(codes.size() > lastSafe, qPrintable(QStringLiteral("round %1: %2 stored, %3 promised")
                                                             .arg(round)
                                                             .arg(codes.size())
                                                             .arg(lastSafe + 1)));
            nextNumber = codes.size();
        }
        // Only the last run's period can still be open; each of the others ended with a crash.
        QCOMPARE(readColumn(file, QStringLiteral("SELECT count(*) FROM period WHERE ending IS NULL")).size(),
                 1);
        QCOMPARE(readColumn(file, QStringLiteral("SELECT count(*) FROM period WHERE ending <> 'interrupted' "
                                                 "OR to_ms < from_ms OR to_ms - from_ms > 5000")),
                 QStringList(QStringLiteral("0")));
    }

private:
    // The last number that was handed in more than a second before the end.
    static int writeAndKill(const QString& file, int firstNumber)
    {
        QProcess writer;
        writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        writer.start(QStringLiteral(WRITER), {file, QString::number(firstNumber)});
        writer.waitForReadyRead();
        writer.waitForFinished(QRandomGenerator::global()->bounded(10, 2000)); // the random moment
        const qint64 killedMs = QDateTime::currentMSecsSinceEpoch();
        writer.kill();
        writer.waitForFinished();
        int lastSafe = firstNumber - 1;
        const QList<QByteArray> lines = writer.readAllStandardOutput().split('\n');
        for (const QByteArray& line : lines) {
            const QList<QByteArray> words = line.split(' ');
            if (words.size() == 2 && words[1].toLongLong() < killedMs - 1000)
                lastSafe = qMax(lastSafe, words[0].toInt());
        }
        return lastSafe;
    }
};

QTEST_GUILESS_MAIN(JournalCrashTest)
#include "tst_journalcrash.moc"
