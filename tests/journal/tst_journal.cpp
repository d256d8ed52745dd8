#include "columns.h"
#include "isotime.h"
#include "journal.h"
#include "journalexport.h"
#include "journalreading.h"
#include "schema.h"
#include "testfiles.h"

#include <QDateTime>
#include <QMutex>
#include <QTemporaryDir>

#include <ctime>
#include <functional>
#include <memory>

namespace {

constexpr qint64 startMs = 1700000000000; // 2023-11-14T22:13:20Z
constexpr const char* allCodes = "SELECT code FROM event ORDER BY id";

JournalEvent makeEvent(int number, const QString& text = QStringLiteral("Fan"))
{
    return {startMs + number, QStringLiteral("A"), 2006, number, text, 1, "{\"n\":1}"};
}

QByteArrayList numbers(int count)
{
    QByteArrayList list;
    for (int i = 0; i < count; ++i)
        list += QByteArray::number(i);
    return list;
}

void overwrite(const QString& name, qint64 from, qint64 count)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(from));
    QCOMPARE(file.write(QByteArray(static_cast<int>(count), 'x')), count);
}

} // namespace

class JournalTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("TZ", "Europe/Berlin");
        ::tzset();
    }
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        m_file = m_folder->filePath(QStringLiteral("%1 journal.sqlite"));
        m_lines.clear();
    }

    void cleanup() { limitFileSize(RLIM_INFINITY); }

    // Odd texts come back from file and export exactly as they went in.
    void keepsWhatItIsGiven()
    {
        const QByteArrayList texts{"say \"on\", then\r\noff", "%1 '?; DROP", "\U0001F50B \u00fc", ""};
        {
            const auto journal = start();
            for (int i = 0; i < texts.size(); ++i)
                journal->append(makeEvent(i, QString::fromUtf8(texts[i])));
            journal->append(JournalEvent{startMs, QStringLiteral("B,\"1\""), 2009, {}, {}, {}, {}});
            journal->append(LogRow{startMs, QStringLiteral("A"), {QStringLiteral("220.0/221.1")}});
        }
        QCOMPARE(lines(), QStringList());
        QCOMPARE(readColumn(m_file, "SELECT text FROM event WHERE unit = 'A'"), texts);
        QCOMPARE(exported(journalexport::writeEvents),
                 QByteArray("time,unit,type,code,text,state,record\n"
                            "2023-11-14T23:13:20.000+01:00,A,2006,0,\"say \"\"on\"\", then\r\noff\",1,"
                            "\"{\"\"n\"\":1}\"\n"
                            "2023-11-14T23:13:20.001+01:00,A,2006,1,%1 '?; DROP,1,\"{\"\"n\"\":1}\"\n"
                            "2023-11-14T23:13:20.002+01:00,A,2006,2,\xf0\x9f\x94\x8b \xc3\xbc,1,"
                            "\"{\"\"n\"\":1}\"\n"
                            "2023-11-14T23:13:20.003+01:00,A,2006,3,,1,\"{\"\"n\"\":1}\"\n"
                            "2023-11-14T23:13:20.000+01:00,\"B,\"\"1\"\"\",2009,,,,\n"));
        const QList<QByteArray> log = exported(journalexport::writeLog).split('\n');
        QVERIFY2(log[0].startsWith("time,unit,Volt,\"Hertz, Hz\",bypass_voltage,"), log[0]);
        QCOMPARE(log[1], QByteArray("2023-11-14T23:13:20.000+01:00,A,220.0/221.1,,,,,,,,,,,,,,"));
    }

    void keepsPeriods()
    {
        const QString a = QStringLiteral("A");
        {
            const auto journal = start();
            journal->endPeriod(a, startMs, PeriodEnding::Lost); // never heard
            journal->beginPeriod(a, startMs);
            journal->beginPeriod(a, startMs + 5);
            journal->endPeriod(a, startMs + 9, PeriodEnding::Lost);
            journal->beginPeriod(a, startMs + 20);
            QTRY_COMPARE(readColumn(m_file, "SELECT from_ms FROM period WHERE to_ms IS NULL"),
                         QByteArrayList{QByteArray::number(startMs + 20)});
        }
        QCOMPARE(readColumn(m_file, "SELECT from_ms || ending FROM period"),
                 QByteArrayList({"1700000000000lost", "1700000000020stopped"}));
    }

    void outlivesLock()
    {
        start();
        Connection other;
        outlives([&] { return other.open(m_file, Connection::Mode::ReadWrite) && other.begin(); },
                 [&] { return other.commit(); }, QStringLiteral("locked by another program"));
    }
    void outlivesOtherHost()
    {
        auto other = std::make_unique<WriterLock>();
        outlives([&] { return other->take(m_file) == WriterLock::Result::Taken; },
                 [&] { return other.reset(), true; }, QStringLiteral("another host writes it"));
    }
    void outlivesMissingFolder()
    {
        m_file = m_folder->filePath(QStringLiteral("none/journal.sqlite"));
        outlives([] { return true; }, [this] { return QDir(m_folder->path()).mkdir(QStringLiteral("none")); },
                 QStringLiteral("there is no folder"));
    }
    void outlivesFullDisk_data()
    {
        const auto row = columns<int>("bytes");
        row("from the start", 1000);
        row("in the middle", 100000);
    }
    void outlivesFullDisk()
    {
        QFETCH(int, bytes);
        outlives([=] { return limitFileSize(static_cast<rlim_t>(bytes)), true; },
                 [] { return limitFileSize(RLIM_INFINITY), true; }, QStringLiteral("; monitoring goes on"),
                 QStringLiteral(" written"));
    }

    void beginsAnewWhenDamaged_data()
    {
        const auto row = columns<int>("from");
        row("not a database", 0);
        row("in the tables", 5000);
        row("in a page of rows only", 300000);
    }
    void beginsAnewWhenDamaged()
    {
        QFETCH(int, from);
        {
            const auto journal = start();
            for (int i = 0; i < 10000; ++i)
                journal->append(makeEvent(i));
        }
        overwrite(m_file, from, 20000);
        const QByteArray damaged = contentOf(m_file);
        start()->append(makeEvent(0)); // ends at once, with the event written
        QCOMPARE(lines().size(), 1);
        QVERIFY2(lines()[0].contains(QLatin1String("is damaged")), qPrintable(lines()[0]));
        QCOMPARE(readColumn(m_file, allCodes), numbers(1));
        const QStringList aside = QDir(m_folder->path()).entryList({QStringLiteral("*.damaged-*")});
        QCOMPARE(aside.size(), 1);
        QVERIFY(lines()[0].contains(aside[0]));
        QCOMPARE(contentOf(m_folder->filePath(aside[0])), damaged);
    }

    void beginsAnewWhenDeleted()
    {
        const auto journal = start();
        journal->beginPeriod(QStringLiteral("A"), startMs);
        QTRY_COMPARE(readColumn(m_file, "SELECT unit FROM period").value(0), QByteArray("A"));
        QVERIFY(QFile::remove(m_file));
        journal->append(makeEvent(0));
        journal->endPeriod(QStringLiteral("A"), startMs + 1, PeriodEnding::Lost);
        QTRY_COMPARE(readColumn(m_file, "SELECT code FROM event, period"), numbers(1));
        QCOMPARE(lines().size(), 1);
    }

    void refusesWhatItMustNotWrite_data()
    {
        const auto row = columns<QString, QString>("statement", "line");
        row("newer", "PRAGMA user_version = 99", "newer version");
        row("foreign", "PRAGMA application_id = 7", "another program");
    }
    void refusesWhatItMustNotWrite()
    {
        start();
        QCOMPARE(Journal::refusal(m_file), QString());
        QVERIFY(Journal::refusal(m_folder->path()).contains(QLatin1String("is a folder")));
        QFETCH(QString, statement);
        Connection other;
        QVERIFY(other.open(m_file, Connection::Mode::ReadWrite) && other.execute(statement));
        other.close();
        const QByteArray content = contentOf(m_file);
        QFETCH(QString, line);
        QVERIFY2(Journal::refusal(m_file).contains(line), qPrintable(Journal::refusal(m_file)));
        QVERIFY(journalexport::writeEvents({m_file, QStringLiteral("-"), {}, {}, {}}).contains(line));
        {
            const auto journal = start();
            QTRY_VERIFY(lines().join(QString()).contains(line));
        }
        QCOMPARE(contentOf(m_file), content);
    }

    void deletesWhatIsOld()
    {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        {
            const auto journal = start();
            for (int i = 0; i < 8000; ++i)
                journal->append(makeEvent(i));
            journal->append(LogRow{startMs, QStringLiteral("A"), {}});
            journal->beginPeriod(QStringLiteral("A"), startMs);
            journal->endPeriod(QStringLiteral("A"), startMs + 1, PeriodEnding::Lost);
            journal->append(JournalEvent{now, QStringLiteral("A"), 2006, 7, {}, {}, {}});
        }
        const qint64 fullSize = QFileInfo(m_file).size();
        {
            const auto journal = start(1);
            constexpr int limitMs = 30000; // a slow disk is not what is tested
            QTRY_COMPARE_WITH_TIMEOUT(readColumn(m_file, allCodes), QByteArrayList{"7"}, limitMs);
            QTRY_COMPARE_WITH_TIMEOUT(readColumn(m_file, "PRAGMA freelist_count"), numbers(1), limitMs);
        }
        QCOMPARE(readColumn(m_file, "SELECT unit FROM period UNION ALL SELECT unit FROM data_log"),
                 QByteArrayList());
        QVERIFY(QFileInfo(m_file).size() < fullSize / 4);
    }

    // A burst of every alarm reaches the file, and exports see it while the writer runs.
    void exportsBesideTheWriter()
    {
        const auto journal = start();
        for (int i = 0; i < 498; ++i)
            journal->append(makeEvent(i));
        journal->append(JournalEvent{startMs, QStringLiteral("B"), 1040, {}, {}, 0, {}});
        QTRY_COMPARE(readColumn(m_file, allCodes).size(), 499);

        ExportRequest request{m_file, {}, startMs + 10, startMs + 13, QStringLiteral("A")};
        const QByteArray text = exported(journalexport::writeEvents, request);
        QCOMPARE(text.count('\n'), 4);
        QVERIFY(text.contains(",A,2006,10,Fan,") && text.contains(",A,2006,12,Fan,"));
        request.fromUtcMs.reset();
        request.toUtcMs.reset();
        request.unit = QStringLiteral("B");
        QCOMPARE(exported(journalexport::writeEvents, request).count('\n'), 2);
    }

    void exportsNothingWhenSomethingIsWrong_data()
    {
        const auto row = columns<QString, QString, QString, QString>("journal", "target", "unit", "line");
        row("no journal", "none", "out.csv", "", "no such file");
        row("a text", "text", "out.csv", "", "damaged");
        row("no such unit", "", "out.csv", "C", "there are: A");
        row("full disk", "", "/dev/full", "", "/dev/full: No space left");
        row("onto itself", "", "%1 journal.sqlite", "", "would replace it");
        row("no folder", "", "none/out.csv", "", "none/out.csv");
    }
    void exportsNothingWhenSomethingIsWrong()
    {
        QFETCH(QString, journal);
        QFETCH(QString, target);
        QFETCH(QString, unit);
        QFETCH(QString, line);
        start()->append(makeEvent(0));
        overwrite(m_folder->filePath(QStringLiteral("text")), 0, 5000);
        if (!journal.isEmpty())
            m_file = m_folder->filePath(journal);
        const QString path = QDir(m_folder->path()).absoluteFilePath(target);
        const QString error = journalexport::writeEvents({m_file, path, {}, {}, unit});
        QVERIFY2(error.contains(line) && !error.contains(QLatin1Char('\n')), qPrintable(error));
        QVERIFY(!QFileInfo::exists(m_folder->filePath(QStringLiteral("out.csv"))));
    }

    void dropsTheOldestOnly()
    {
        RecordQueue queue(3);
        for (int i = 0; i < 5; ++i) {
            queue.append(LogRow{i, {}, {}});
            queue.append(makeEvent(i));
        }
        QCOMPARE(queue.takeDroppedCount(), size_t(4));
        const std::vector<JournalRecord> records = queue.take(4);
        QCOMPARE(std::get<JournalEvent>(records.at(0)).code.value(), 2);
        QCOMPARE(std::get<LogRow>(records.at(3)).utcMs, 2);
        QCOMPARE(queue.size(), size_t(2));
    }

    void readsTimes_data()
    {
        const auto row = columns<QString>("utc"); // empty when refused
        row("2024-03-05", "2024-03-04T23:00:00.000Z");
        row("2024-03-05T07:08", "2024-03-05T06:08:00.000Z");
        row("2024-07-05 07:08:09", "2024-07-05T05:08:09.000Z"); // summer
        row("2024-03-05T07:08:09.25-03:30", "2024-03-05T10:38:09.250Z");
        row("2024-03-05T07:08:09Z", "2024-03-05T07:08:09.000Z");
        row("2024-02-30", "");
        row("2024-03-05T24:30", "");
        row("2024-03-05T07:08+15:00", "");
        row("2024-03-05Z", "");
        row("5.3.2024", "");
        row("", "");
    }
    void readsTimes()
    {
        QFETCH(QString, utc);
        const auto ms = isotime::toUtcMs(rowName(), isotime::DateMeans::StartOfDay);
        QCOMPARE(ms ? QDateTime::fromMSecsSinceEpoch(*ms, Qt::UTC).toString(Qt::ISODateWithMs) : QString(),
                 utc);
        // The day on which summer time begins has 23 hours.
        const QString shortDay = QStringLiteral("2024-03-31");
        QCOMPARE(*isotime::toUtcMs(shortDay, isotime::DateMeans::EndOfDay) -
                     *isotime::toUtcMs(shortDay, isotime::DateMeans::StartOfDay),
                 23 * 3600 * 1000);
    }

private:
    std::unique_ptr<Journal> start(int keepDays = 0)
    {
        const QStringList headings{QStringLiteral("Volt"), QStringLiteral("Hertz, Hz")};
        return std::make_unique<Journal>(JournalSettings{m_file, headings, keepDays},
                                         [this](const QString& line) {
                                             const QMutexLocker locker(&m_lock);
                                             m_lines += line;
                                         });
    }
    QStringList lines() const
    {
        const QMutexLocker locker(&m_lock);
        return m_lines;
    }
    QByteArray exported(QString (*write)(const ExportRequest&), ExportRequest request = {})
    {
        request.journalFile = m_file;
        request.targetFile = m_folder->filePath(QStringLiteral("out.csv"));
        const QString error = write(request);
        return error.isEmpty() ? contentOf(request.targetFile) : error.toUtf8();
    }

    // Trouble is told in one line and so is its end, and then nothing is missing and nothing twice.
    void outlives(const std::function<bool()>& begin, const std::function<bool()>& end,
                  const QString& expected,
                  const QString& recovery = QStringLiteral("works again, 3000 records written"))
    {
        QVERIFY(begin());
        const auto journal = start();
        for (int i = 0; i < 3000; ++i)
            journal->append(makeEvent(i));
        QTRY_COMPARE(lines().size(), 1);
        QVERIFY(end());
        QTRY_COMPARE(lines().size(), 2);
        const QString trouble = lines()[0];
        QVERIFY2(trouble.contains(expected) && trouble.contains(m_file), qPrintable(trouble));
        QVERIFY2(trouble.contains(QLatin1String("monitoring goes on, ")), qPrintable(trouble));
        QVERIFY2(lines()[1].endsWith(recovery), qPrintable(lines()[1]));
        QTRY_COMPARE(readColumn(m_file, allCodes).size(), 3000);
        QCOMPARE(readColumn(m_file, allCodes), numbers(3000));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
    mutable QMutex m_lock;
    QStringList m_lines; // under m_lock
};

QTEST_GUILESS_MAIN(JournalTest)
#include "tst_journal.moc"
