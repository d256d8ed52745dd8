#include "rig.h"

#include "vek5font.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

namespace {

constexpr int half = 498;
constexpr qint64 dwell = 1500; // ms in which a transition that stays must have been told: queries and disk
constexpr qint64 lag = 6000;   // ms after which a value is stale, whatever the fault

struct Transition
{
    qint64 atMs;
    int state;
};
using Course = QMap<int, QVector<Transition>>; // by alarm index

struct Silence
{
    qint64 beginMs = 0;
    qint64 endMs = 0;
};

Course traced(const QList<QJsonObject>& trace, Silence* silence)
{
    Course course;
    for (const QJsonObject& line : trace) {
        const auto atMs = static_cast<qint64>(line.value(QStringLiteral("t")).toDouble());
        if (line.contains(QStringLiteral("fault"))) {
            silence->beginMs = silence->beginMs == 0 ? atMs : silence->beginMs;
            silence->endMs = atMs;
        }
        const QJsonObject points = line.value(QStringLiteral("points")).toObject();
        for (auto point = points.begin(); point != points.end(); ++point) {
            const int index = point.key().toInt() - 2000;
            if (index >= 0 && index < half)
                course[index] << Transition{atMs, point.value().toInt()};
        }
    }
    return course;
}

bool heldState(const QVector<Transition>& course, int state, qint64 fromMs, qint64 toMs)
{
    for (int i = 0; i < course.size(); ++i) {
        const qint64 endMs = i + 1 < course.size() ? course.at(i + 1).atMs : toMs;
        if (course.at(i).state == state && course.at(i).atMs <= toMs && endMs >= fromMs)
            return true;
    }
    return false;
}

} // namespace

// What the journal tells against what the unit truly did: every alarm at random, a loss in between.
class tst_Truth : public QObject
{
    Q_OBJECT

private slots:
    void alarms_data();
    void alarms();

private:
    Course journalled(const QString& file);
};

Course tst_Truth::journalled(const QString& file)
{
    Course course;
    const QStringList texts = vek5Font::instance()->getEventLogDesc();
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), file);
    database.setDatabaseName(file);
    if (!database.open())
        return course;
    QSqlQuery query(
        QStringLiteral("SELECT time_ms, code, text, state FROM event WHERE type = 2006 ORDER BY id"),
        database);
    while (query.next()) {
        const int code = query.value(1).toInt();
        const int state = query.value(3).toInt();
        if (query.value(2).toString() != texts.at(code) || (code < half) != (state == 1))
            qWarning("code %d, state %d, wrong text or half", code, state);
        course[code % half] << Transition{query.value(0).toLongLong(), state};
    }
    return course;
}

void tst_Truth::alarms_data()
{
    Rig::addTransportRows();
}

void tst_Truth::alarms()
{
    QFETCH(QStringList, transport);
    QFETCH(QString, config);
    Rig rig;
    // A round, in which every alarm comes and goes, takes 21 s; the silence falls into the first.
    rig.writeFile(QStringLiteral("alarms"), "0 random alarms 120 2.5\n16 fault no-answer for 5\n");
    rig.writeFile(QStringLiteral("serial.ini"), "[ttyUPS]\ntimeout=300\n");
    rig.startUnitA(transport, config, QStringLiteral("alarms"), {QStringLiteral("retries=2")});
    rig.startHost({QStringLiteral("--seconds"), QStringLiteral("60")});
    QCOMPARE(rig.waitForHost(120000), 0);
    QCOMPARE(rig.events(QStringLiteral("A"), 1041).size(), 1);
    QCOMPARE(rig.events(QStringLiteral("A"), 1040).size(), 2);

    Silence silence;
    const Course truth = traced(rig.trace(QStringLiteral("trace")), &silence);
    const Course kept = journalled(rig.path(QStringLiteral("journal.sqlite")));
    QVERIFY(silence.endMs > silence.beginMs);
    QCOMPARE(kept.size(), half);
    qint64 firstMs = std::numeric_limits<qint64>::max();
    qint64 lastMs = 0;
    for (const QVector<Transition>& course : kept) {
        firstMs = qMin(firstMs, course.constFirst().atMs);
        lastMs = qMax(lastMs, course.constLast().atMs);
    }
    int checked = 0;
    for (int index = 0; index < half; ++index) {
        const QVector<Transition> real = truth.value(index);
        int expected = 1; // appearances and clearings take turns: each is told once
        for (const Transition& event : kept.value(index)) {
            QCOMPARE(event.state, expected);
            expected = 1 - expected;
            QVERIFY2(heldState(real, event.state, event.atMs - lag, event.atMs),
                     qPrintable(QString::number(index)));
        }
        for (int i = 0; i + 1 < real.size(); ++i) {
            const qint64 beginMs = real.at(i).atMs;
            const qint64 endMs = real.at(i + 1).atMs;
            const bool isSilent = beginMs < silence.endMs + lag && endMs > silence.beginMs - dwell;
            if (endMs - beginMs < dwell || beginMs < firstMs || endMs > lastMs || isSilent)
                continue;
            const auto tellsIt = [&](const Transition& event) {
                return event.state == real.at(i).state && event.atMs >= beginMs &&
                       event.atMs <= beginMs + dwell;
            };
            const QVector<Transition> events = kept.value(index);
            QCOMPARE(std::count_if(events.begin(), events.end(), tellsIt), 1);
            ++checked;
        }
    }
    QVERIFY2(checked > half, qPrintable(QString::number(checked)));
}

QTEST_GUILESS_MAIN(tst_Truth)
#include "tst_truth.moc"
