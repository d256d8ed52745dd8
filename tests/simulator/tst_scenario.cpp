#include "builtinscenarios.h"
#include "civiltime.h"
#include "columns.h"
#include "scenarioparser.h"
#include "scenariosource.h"
#include "simulatedunit.h"
#include "unitpast.h"

#include <QSet>

using namespace simulation;

namespace {

constexpr int stepMs = 100;

std::string noFaultsButLate(const std::string& text)
{
    return text == "late 5" ? "" : "no such fault";
}

UnitCourse courseOf(const QByteArray& text, const FaultHook& fault = nullptr)
{
    QString error;
    const auto scenario = parseScenario(text, QStringLiteral("test"), noFaultsButLate, &error);
    if (!scenario)
        qFatal("%s", qPrintable(error));
    return {0, *scenario, 0, fault};
}

void run(SimulatedUnit& unit, double seconds)
{
    for (int i = 0; i < qRound(seconds * 1000 / stepMs); ++i)
        unit.advance(stepMs);
}

} // namespace

/// Scenarios as text, and what a unit makes of them.
class TestScenario : public QObject
{
    Q_OBJECT

private slots:
    void malformed_data()
    {
        const auto row = columns<QString>("wrong"); // what the one line has to hold
        row("8 mains of", "file:1: \"mains of\": write \"mains off|on\" or \"mains voltage VOLTS\"");
        row("# comment\n\n8 explode",
            "file:3: \"explode\": there is no such action; there are mains, bypass");
        row("8", "file:1: there is no action");
        row("soon mains off", "file:1: \"soon\" is no time");
        row("-1 mains off", "no time");
        row("nan mains off", "no time");
        row("1e99 mains off", "no time");
        row("9 mains off\n8 mains on", "file:2: the time 8 lies before");
        row("1 mains voltage 501", "VOLTS is a number from 0 to 500");
        row("1 mains voltage inf", "write \"mains");
        row("1 mains off now", "write \"mains");
        row("1 alarm 512 on", "INDEX is a number from 0 to 511");
        row("1 alarm 1.5 on", "INDEX");
        row("1 point 3017 40", "POINT is a number from 4000 to 4275");
        row("1 random alarms 5 0", "SECONDS is a number from 0.1");
        row("1 setting 3017 15", "setting 3017 does not take 15");
        row("1 setting 3009 0", "setting 3009");
        row("1 command 5", "there is no command 5");
        row("1 fault", "write \"fault TEXT\"");
        row("1 fault often", "file:1: no such fault");
        row("0 repeat", "repeat needs a time after 0");
        row("5 repeat\n+1 mains off", "file:2: nothing can follow repeat");
    }
    void malformed()
    {
        QFETCH(QString, wrong);
        QString error;
        QVERIFY(!parseScenario(rowName().toUtf8(), QStringLiteral("file"), noFaultsButLate, &error));
        QVERIFY2(error.contains(wrong) && !error.contains(QLatin1Char('\n')), qPrintable(error));
    }

    void courses_data()
    {
        // Points and what they are after these seconds, in turn.
        const auto row = columns<double, QVector<int>>("seconds", "expected");
        row("1 mains off\n+2 mains on # back", 2, {4250, 2, 2257, 1, 2021, 1, 4190, 0});
        row("1 mains off\n+2 mains on", 7, {4250, 1, 2257, 0, 4239, 2});
        row("1 mains voltage 180\n", 3, {4250, 2, 2257, 1, 2161, 1});
        row("1 mains voltage 187\n1 setting 3006 1", 3, {4250, 1, 2257, 0, 2161, 1, 4190, 0});
        row("1 mains frequency 56", 3, {4250, 2, 2258, 1, 2162, 1});
        row("1 mains voltage 290", 3, {4250, 2, 2256, 1, 2160, 1});
        row("1 load 115", 30, {4250, 3, 2133, 1, 2134, 0, 2199, 1, 4220, 0, 4221, 1, 4224, 1});
        row("1 mains voltage 187\n1 load 95", 5, {4250, 3, 2021, 1, 2257, 0, 4239, 2});
        row("1 battery off\n1 load 115", 5, {4250, 1, 4220, 1});
        row("1 load 115\n4 battery charge 10", 8, {4250, 1, 2022, 1, 4101, 2});
        row("1 overload", 15, {4250, 4, 2134, 1, 2202, 1, 2139, 1, 4240, 2});
        row("1 load 160\n2 load normal", 1.5, {4161, 1});
        row("1 load 160\n2 load normal", 6, {4161, 1});
        row("1 load 160\n2 load normal", 8, {4161, 2, 2139, 0});
        row("1 bypass bad\n1 load 160", 3, {4161, 0, 2244, 1, 2024, 1});
        row("1 setting 3011 0\n1 load 160", 3, {4161, 0, 2244, 1, 2024, 0});
        row("1 setting 3000 4", 3, {4161, 1, 4240, 2});
        row("1 setting 3000 4\n2 mains off", 3, {4161, 2, 4101, 4});
        row("1 temperature rectifier 85", 3, {4241, 85, 2320, 1, 2448, 0});
        row("1 temperature battery -5\n2 temperature battery normal", 300, {2214, 0});
        row("1 battery off", 3, {4101, 0, 4103, 0, 2028, 1, 4250, 1});
        row("1 battery off\n2 mains off", 3, {4250, 0, 2244, 1});
        row("1 battery off\n2 battery on\n2 mains off", 3, {4250, 2, 2028, 0});
        row("1 epo on\n2 epo off\n3 command 7", 5, {4250, 0, 2029, 1, 4239, 0, 4101, 1, 2244, 0});
        row("1 epo on\n2 epo off\n3 command 12\n4 command 7", 9, {4250, 1, 2029, 0});
        row("1 epo on\n2 command 12\n2 command 7", 5, {4250, 0, 2029, 1});
        row("1 setting 3012 0\n1 epo on", 5, {4250, 1, 2029, 0});
        row("1 battery charge 10\n1 command 0", 10, {4259, 0, 2215, 1, 2022, 1, 4250, 1});
        row("1 command 0 1", 60, {4259, 2});
        row("1 command 0 1", 62, {4259, 0, 4250, 1});
        row("1 setting 3054 1\n1 battery charge 1\n1 mains off\n5 mains on", 20, {4250, 0, 2023, 0, 2212, 1});
        row("1 battery charge 1\n1 mains off\n5 mains on", 20, {4250, 1, 2023, 0});
        row("1 setting 3018 1\n1 mains off", 95, {4250, 2, 2022, 1, 2023, 0, 2276, 1, 4109, 1});
        row("1 setting 3018 1\n1 mains off", 130, {4250, 0, 2022, 1, 2023, 1, 2244, 1, 4163, 0});
        row("1 battery charge 1\n1 mains off\n5 mains on", 6.5, {4250, 4, 2212, 1}); // bridges the start
        row("1 battery charge 1\n1 mains off\n5 mains on\n10 command 12", 11, {2212, 0, 4101, 2});
        row("1 alarm 511 on\n1 alarm 20 on\n1 point 4107 -12.5", 2, {2511, 1, 2020, 1, 4107, -12});
        row("1 alarm 20 on\n2 alarm 20 auto", 3, {2020, 0});
        row("1 mains off\n1 alarm 257 off", 3, {2257, 0, 2368, 1});
        row("1 random alarms 498 1\n2.5 random alarms off", 2.2, {2000, 1, 2497, 1, 2498, 0});
        row("1 random alarms 498 1\n2.5 random alarms off", 3, {2000, 0, 2497, 0});
        row("1 mains off\n2 mains on\n10 repeat", 11.5, {2257, 1});
        row("1 fault late 5", 2, {4250, 1});
        // Orders that the unit carries out, and such as it refuses in its state.
        row("1 command 0", 3, {4259, 1});
        row("1 command 0 10", 3, {4259, 2});
        row("1 command 2", 3, {4101, 4});
        row("1 command 2\n3 command 3", 6, {4101, 3});
        row("1 command 4", 6, {4163, 0, 4224, 1});
        row("1 command 4\n6 command 7", 11, {4250, 1});
        row("1 command 9", 6, {4240, 0});
        row("1 command 10", 6, {4161, 1, 4240, 2});
        row("1 command 9\n6 command 11", 11, {4161, 2});
        row("1 command 10\n6 command 0", 8, {4259, 0});
        row("1 command 4\n6 command 11", 11, {4161, 0});
        row("1 command 0 0", 3, {4259, 0});
    }
    void courses()
    {
        QFETCH(double, seconds);
        QFETCH(QVector<int>, expected);
        std::vector<std::string> faults;
        SimulatedUnit unit({1, "Test"}, 0, nullptr,
                           courseOf(rowName().toUtf8(), [&](const std::string& fault) {
                               faults.push_back(fault);
                               return std::string();
                           }));
        run(unit, seconds);
        for (int i = 0; i < expected.size(); i += 2)
            QVERIFY2(
                int(unit.image().value(expected.at(i))) == expected.at(i + 1),
                qPrintable(
                    QStringLiteral("%1 is %2").arg(expected.at(i)).arg(unit.image().value(expected.at(i)))));
        QCOMPARE(faults.size(), rowName().contains(QLatin1String("fault")) ? size_t(1) : size_t(0));
    }

    void demoShowsEveryMode()
    {
        QString error;
        const QByteArray text = *scenarioText(QStringLiteral("demo"), &error);
        for (const int address : {1, 2, 3, 4}) {
            UnitCourse course = courseOf(text);
            course.scenarioDelayMs = scenarioDelayMs(QStringLiteral("demo"), address);
            const int delayS = int(course.scenarioDelayMs / 1000);
            SimulatedUnit unit({address, "Test"}, 0, nullptr, std::move(course));
            QMap<int, QSet<int>> seen;
            QMap<int, QSet<int>> active; // by whole second
            for (int ms = stepMs; ms <= (120 + delayS) * 1000; ms += stepMs) {
                unit.advance(stepMs);
                const RegisterImage image = unit.image();
                for (const int point : {4101, 4161, 4190, 4239, 4240, 4250, 4259})
                    seen[point].insert(int(image.value(point)));
                for (int i = 0; i < unitmap::alarmPointCount; ++i)
                    if (image.alarms[size_t(i)])
                        active[ms / 1000].insert(i);
            }
            QVERIFY(active.value(5).isEmpty());
            QVERIFY(active.value(10 + delayS).contains(257));
            QVERIFY2(active.value(24).isEmpty() || !active.value(24).contains(257), "gone again within 25 s");
            QCOMPARE(seen.value(4250), (QSet<int>{0, 1, 2, 3, 4}));
            QCOMPARE(seen.value(4161), (QSet<int>{0, 1, 2}));
            QCOMPARE(seen.value(4239), (QSet<int>{0, 1, 2, 3}));
            QCOMPARE(seen.value(4240), (QSet<int>{0, 1, 2}));
            QCOMPARE(seen.value(4101), (QSet<int>{0, 1, 2, 3, 4, 5}));
            QCOMPARE(seen.value(4259), (QSet<int>{0, 1, 2}));
            QCOMPARE(seen.value(4190), (QSet<int>{0, 1}));
            // What one round leaves behind would pile up in the next.
            QCOMPARE(active.value(119 + delayS), QSet<int>());
            QCOMPARE(unit.image().value(4250), 1.0);
        }
    }

    void everyAlarmComesAndGoes()
    {
        const auto runOf = [](quint32 seed) {
            UnitCourse course = courseOf("0 random alarms 40 0.5");
            course.seed = seed;
            SimulatedUnit unit({1, "Test"}, 0, nullptr, std::move(course));
            QVector<int> events;
            RegisterImage before = unit.image();
            for (int ms = 0; ms < 20000; ms += stepMs) {
                unit.advance(stepMs);
                const RegisterImage now = unit.image();
                for (int i = 0; i < unitmap::alarmPointCount; ++i)
                    if (now.alarms[size_t(i)] != before.alarms[size_t(i)])
                        events.append(now.alarms[size_t(i)] ? i : i + 498);
                before = now;
            }
            return std::make_pair(events, before.inputs);
        };
        const auto run = runOf(1);
        for (int code = 0; code < 996; ++code)
            QVERIFY2(run.first.contains(code), qPrintable(QString::number(code)));
        QVERIFY(run == runOf(1));
        QVERIFY(run.first != runOf(2).first && run.second != runOf(2).second);
    }

    // Each alarm of the past came and went by turns, in order of time and before the start.
    void pastIsBelievable()
    {
        constexpr qint64 startMs = 1714998600000;
        const UnitIdentity unit{1, "Test"};
        const auto past = pastOf(unit, 0, startMs).records();
        QVERIFY2(past.size() >= 48, qPrintable(QString::number(past.size())));
        QMap<int, int> states;
        QSet<int> distinctAlarms;
        qint64 lastMs = startMs - 60LL * 86400000;
        qint64 lastDischargeMs = 0;
        for (const HistoryRecord& record : past) {
            const int code = record[unitmap::HistoryCode];
            const qint64 civilMs = *civilMsOf(&record[unitmap::HistoryYear]);
            QVERIFY2(civilMs >= lastMs && civilMs < startMs, qPrintable(QString::number(code)));
            lastMs = civilMs;
            QCOMPARE(int(record[unitmap::HistoryState]), 1 - states.value(code));
            states[code] = record[unitmap::HistoryState];
            distinctAlarms += code;
            if (code == 21 && states[code] == 1)
                lastDischargeMs = civilMs;
        }
        QCOMPARE(states.values().count(1), 0);
        QVERIFY(distinctAlarms.size() >= 20);
        QVERIFY(pastOf(unit, 0, startMs).records() == past);
        QVERIFY(pastOf(unit, 1, startMs).records() != past);
        UnitCourse course;
        course.past = pastOf(unit, 0, startMs);
        const RegisterImage image = SimulatedUnit(unit, startMs, nullptr, std::move(course)).image();
        QCOMPARE(qint64(*civilMsOf(&image.inputs[4268 - 4000])), lastDischargeMs);
    }
};

QTEST_APPLESS_MAIN(TestScenario)
#include "tst_scenario.moc"
