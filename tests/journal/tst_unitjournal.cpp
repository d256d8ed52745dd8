// What the host hands over to the journal, of all that a collector tells.

#include "collectthread.h"
#include "columns.h"
#include "journal.h"
#include "journalreading.h"
#include "unitjournal.h"

#include <QTemporaryDir>

namespace {

constexpr int missedAnswer = -1; // no event: a cycle that failed

// Tells what the test says, on the test's thread.
class ScriptedCollector : public CollectThread
{
public:
    QStringList changeLogData(QMap<int, QVariant> data) override { return {data.value(4133).toString()}; }
};

// As a collector's record looks at the end of a report: with the keys of everything that came before.
QVariantMap fullRecord()
{
    return {{QStringLiteral("name"), QStringLiteral("A")},
            {QStringLiteral("alarmId"), 1},
            {QStringLiteral("alarmState"), 1},
            {QStringLiteral("dis_alarm"), 1},
            {QStringLiteral("state"), 5},
            {QStringLiteral("controlId"), 1045},
            {QStringLiteral("controlValue"), QStringLiteral("h.csv")},
            {QStringLiteral("desc"), QStringLiteral("done")},
            {QStringLiteral("result"), 7},
            {QStringLiteral("data"), QVariant::fromValue(QMap<int, QVariant>{{4133, 220}})}};
}

} // namespace

class UnitJournalTest : public QObject
{
    Q_OBJECT

private slots:
    // Each type keeps its own keys only, and nothing is kept twice.
    void keepsEventsWithTheirOwnKeys()
    {
        tell({2006, 2001, 2007, 1041, 1040, 2001, 1042, 2009, 2010, 1029});
        QCOMPARE(stored("SELECT type || '|' || ifnull(code, '-') || '|' || ifnull(state, '-') "
                        "|| '|' || text FROM event ORDER BY id"),
                 QByteArrayList({"2006|1|1|Fan fault ", "1041|-|5|no answer: communication lost",
                                 "1040|-|5|communication established", "1042|1045|7|done",
                                 "2009|-|1|status point 2368 is now 1", "2010|-|1|status point 2022 is now 1",
                                 "1029|1045|-|h.csv"}));
        QCOMPARE(stored("SELECT record FROM event WHERE type = 2006"),
                 QByteArrayList{"{\"alarmId\":1,\"alarmState\":1,\"name\":\"A\"}"});
    }

    void logsLiveValuesOnly_data()
    {
        const auto row = columns<QList<int>, int>("types", "rows");
        row("not heard", {2007, 1041, 2007}, 0);
        row("heard, no values yet", {1040}, 0);
        row("answers", {1040, 2007, 2007}, 1); // the second is not yet due
        row("lost", {1040, 1041, 2007}, 0);
        row("missed an answer", {1040, missedAnswer, 2007}, 0);
        row("back", {1040, 1041, 2007, 1040, 2007}, 1);
    }
    void logsLiveValuesOnly()
    {
        QFETCH(QList<int>, types);
        tell(types);
        QTEST(stored("SELECT unit FROM data_log WHERE input_voltage = '220'").size(), "rows");
    }

    void logsAtStepsOfTheInterval()
    {
        LogSchedule schedule(10);
        QList<int> taken;
        for (const int ms : {3, 4, 12, 14, 22, 23, 32, 58, 59, 67, 68})
            taken += schedule.take(ms) ? QList<int>{ms} : QList<int>{};
        QCOMPARE(taken, QList<int>({3, 14, 23, 58, 68})); // no row is made up for, none drifts
    }

private:
    void tell(const QList<int>& types)
    {
        m_folder.reset(new QTemporaryDir);
        Journal journal({m_folder->filePath(QStringLiteral("j")), {}, 0}, [](const QString&) {});
        ScriptedCollector collector;
        const QStringList texts{QString(), QStringLiteral("Fan fault ")};
        const UnitJournal unitJournal(QStringLiteral("A"), collector, texts, 10, journal);
        for (const int type : types) {
            if (type == missedAnswer)
                ++collector.m_failureCount;
            else
                emit collector.postDEvent(type, fullRecord());
        }
    }
    QByteArrayList stored(const char* statement) const
    {
        return readColumn(m_folder->filePath(QStringLiteral("j")), statement);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(UnitJournalTest)
#include "tst_unitjournal.moc"
