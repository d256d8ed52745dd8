#include "alarmrules.h"
#include "unitmodel.h"

#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <functional>

using namespace simulation;

namespace {

constexpr int stepMs = 100;

bool isNear(double value, double expected, double tolerance)
{
    return qAbs(value - expected) <= tolerance;
}

} // namespace

/// Runs the model through long courses and checks at every step what a reader of the registers would see.
class TestUnitModel : public QObject
{
    Q_OBJECT

private slots:
    void randomCourses()
    {
        QMap<int, QSet<int>> seen;
        QSet<int> alarms;
        for (quint32 seed = 1; seed <= 12; ++seed) {
            QRandomGenerator random(seed);
            UnitModel model({int(seed), "Test unit"}, seed, 1700000000000);
            int stepsInState = 0;
            for (int ms = 0; ms < 1200000; ms += stepMs) {
                const RegisterImage before = model.image();
                const bool changes = random.bounded(80) == 0;
                if (changes)
                    changeSomething(model, random);
                const double chargeBefore = model.state().chargePercent;
                model.step(stepMs);
                const RegisterImage& now = model.image();
                stepsInState = now.value(4101) == before.value(4101) && !changes ? stepsInState + 1 : 0;
                const QString fault = contradiction(now) + imbalance(now, stepsInState > 2);
                QVERIFY2(fault.isEmpty(),
                         qPrintable(QStringLiteral("%1, %2 ms: %3").arg(seed).arg(ms).arg(fault)));
                const double gained = model.state().chargePercent - chargeBefore;
                QVERIFY(now.value(4101) == 4 ? gained <= 0 : gained >= 0);
                for (int point : {4101, 4161, 4239, 4240, 4250, 4259})
                    seen[point].insert(int(now.value(point)));
                for (const AlarmRule& rule : alarmRules)
                    if (now.alarms[size_t(rule.index)])
                        alarms.insert(rule.index);
            }
        }
        // Otherwise the courses would prove little.
        QCOMPARE(seen.value(4101).size() + seen.value(4161).size() + seen.value(4239).size(), 6 + 3 + 4);
        QCOMPARE(seen.value(4240).size() + seen.value(4250).size() + seen.value(4259).size(), 3 + 5 + 3);
        QCOMPARE(alarms.size(), int(std::size(alarmRules)));
    }

private:
    struct Rule
    {
        bool isBroken;
        const char* text;
    };
    static QString broken(std::initializer_list<Rule> rules)
    {
        for (const Rule& rule : rules)
            if (rule.isBroken)
                return QString::fromLatin1(rule.text);
        return QString();
    }

    /// States, paths, flow points and alarms that cannot hold together; empty when all is well.
    static QString contradiction(const RegisterImage& now)
    {
        const auto is = [&](int point) { return now.value(point) == 1; };
        const int workMode = int(now.value(4250));
        const int battery = int(now.value(4101));
        const int path = int(now.value(4161));
        const int rectifier = int(now.value(4239));
        const bool charges = is(4220) && is(4224);
        const bool discharges = is(4221) && is(4224);
        const bool combined = workMode == 3;
        return broken(
            {{charges + discharges + (is(4220) && is(4221)) > 1, "power flows both ways"},
             {(is(4222) && is(4223)) != (path == 2) || (is(4218) && is(4223)) != (path == 1) ||
                  is(4223) != (path != 0),
              "the flow to the load is not that of the output mode"},
             {discharges != (battery == 4) || is(2021) != (battery == 4) ||
                  (workMode == 2 || combined) != (battery == 4),
              "not all agree on whether the battery supplies"},
             {(workMode == 0) != (path == 0) || (workMode == 4) != (path == 1) || is(2020) != (path == 1),
              "work mode and output mode differ"},
             {is(4219) && (now.value(4133) == 0 || is(2368) || is(2029)),
              "the rectifier draws from a mains that is not good"},
             {path == 1 && !is(4190), "a bad bypass supplies"},
             {is(4219) != (rectifier == 1 || rectifier == 2) || is(4220) != (rectifier == 2 && !combined),
              "the flow into the rectifier is not that of its state"},
             {(rectifier == 2 && battery == 4) != combined, "two sources, and the mode tells otherwise"},
             {path == 2 && now.value(4240) != 2, "the inverter supplies without running"},
             {is(2022) != is(2276) || is(2023) != is(2277) || is(2029) != is(2183) ||
                  is(2028) != (battery == 0) || is(2024) != (now.value(4190) == 0) ||
                  is(2368) != (is(2256) || is(2257) || is(2258) || is(2259)) ||
                  ((is(2029) || is(2244)) && path != 0) || (is(2208) && !is(2021)) || (is(2134) && !is(2133)),
              "alarms contradict each other or the state"}});
    }

    /// Powers that do not balance or values out of range, beyond what rounding explains; empty when all is
    /// well.
    static QString imbalance(const RegisterImage& now, bool steady)
    {
        double outputW = 0;
        double inputW = 0;
        for (int phase = 0; phase < 3; ++phase) {
            const auto at = [&](int point) { return now.value(point + phase); };
            const double kva = at(4175);
            const double kw = at(4178);
            outputW += kw * 1000;
            inputW += at(4133) * at(4136) * at(4142);
            const QString wrong =
                broken({{!isNear(kva * 1000, at(4163) * at(4166), 70) ||
                             !isNear(kw, kva * at(4172), 0.1 + 0.005 * kva) ||
                             !isNear(kva * kva, kw * kw + at(4181) * at(4181), 0.12 * 2 * kva + 0.02),
                         "apparent, active and reactive power do not agree"},
                        {!isNear(at(4184), 100 * kva / (now.value(4243) / 3), 1.6), "the load percentage"},
                        {now.value(4161) == 2 && !isNear(at(4163), now.value(4246), 2), "inverter voltage"},
                        {at(4195) != (now.value(4161) == 1 ? at(4166) : 0), "bypass current"}});
            if (!wrong.isEmpty())
                return wrong;
        }
        const double halvesW[] = {now.value(4103) * now.value(4105), now.value(4104) * now.value(4106)};
        const bool discharges = now.value(4101) == 4;
        const bool draws = now.value(4239) == 2;
        const double besidesW = 2 * halvesW[0] * (discharges ? -0.93 / 0.94 : 1);
        const double ratedW = 1000 * now.value(4243) * now.value(4133) / now.value(4244);
        return broken(
            {{!isNear(halvesW[0], halvesW[1], 1), "the battery halves differ"},
             {(now.value(4103) < 180) == (now.value(4101) != 0) || now.value(4103) > 300, "battery voltage"},
             {discharges && !draws && steady && !isNear(2 * halvesW[0], outputW / 0.93, 0.03 * outputW + 250),
              "the battery does not carry the load"},
             {draws && steady && now.value(4161) == 2 &&
                  !isNear(inputW, outputW / 0.94 + besidesW + 200, 0.05 * outputW + 250),
              "the mains does not carry load and charge"},
             {draws && discharges && steady && !isNear(inputW, 0.99 * ratedW, 0.03 * ratedW),
              "the battery helps a rectifier that could draw more"},
             {now.value(4111) > 100 || now.value(4110) < 0 || now.value(4110) > 10000,
              "charge or remaining time is out of range"}});
    }

    static void changeSomething(UnitModel& model, QRandomGenerator& random)
    {
        const auto pick = [&](std::initializer_list<double> values) {
            return values.begin()[random.bounded(int(values.size()))];
        };
        const auto& order = unitmap::commandRows[random.bounded(uint(std::size(unitmap::commandRows)))];
        Site& site = model.site();
        const std::function<void()> changes[] = {
            [&] { site.mainsOn = !site.mainsOn; },
            [&] {
                site.mainsVoltageV = pick({150, 180, 230, 230, 240, 290});
            },
            [&] {
                site.mainsFrequencyHz = pick({44, 50, 50, 51, 56});
            },
            [&] {
                site.loadPercent = pick({3, 40, 80, 107, 116, 130, 160, 210});
            },
            [&] { site.loadPercent.reset(); },
            [&] { site.bypassConnected = random.bounded(3) != 0; },
            [&] { site.batteryConnected = random.bounded(4) != 0; },
            [&] {
                model.setBatteryCharge(pick({0, 5, 15, 30, 60, 95, 100}));
            },
            [&] { site.emergencyPressed = random.bounded(5) == 0; },
            [&] {
                site.rectifierC = pick({30, 85});
            },
            [&] {
                site.inverterC = pick({30, 85});
            },
            [&] {
                site.batteryC = pick({-5, 25, 50});
            },
            [&] { model.command(int(order.code), unitmap::noArgument); },
            [&] { model.command(int(order.code), quint16(1 + random.bounded(3))); },
        };
        changes[random.bounded(int(std::size(changes)))]();
        if (random.bounded(4) == 0) { // or the units would stay off most of the time
            model.command(int(unitmap::Command::ClearFaults), unitmap::noArgument);
            model.command(int(unitmap::Command::StartUp), unitmap::noArgument);
        }
    }
};

QTEST_APPLESS_MAIN(TestUnitModel)
#include "tst_unitmodel.moc"
