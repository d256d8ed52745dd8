#include "alarmrules.h"
#include "unitmodel.h"

#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

using namespace simulation;

namespace {

constexpr int stepMs = 100;
const UnitIdentity identity{2, "Test unit"};

struct Order
{
    int second;
    int code;
    int argument;
};
using Orders = QVector<Order>;

bool isNear(double value, double expected, double tolerance)
{
    return qAbs(value - expected) <= tolerance;
}

} // namespace

Q_DECLARE_METATYPE(Orders)

/// Runs the model through long courses and checks at every step what a reader of the registers would see.
class TestUnitModel : public QObject
{
    Q_OBJECT

private slots:
    void randomCourses();
    void sameSeedSameCourse();
    void commands_data();
    void commands();

private:
    static QString contradiction(const RegisterImage& now);
    static QString imbalance(const RegisterImage& now, bool steady);
    static QString wrongAlarm(const RegisterImage& now);
    static void changeSomething(UnitModel& model, QRandomGenerator& random, bool& chargeSet);
};

/// States, paths and flow points that cannot hold together; empty when all is well.
QString TestUnitModel::contradiction(const RegisterImage& now)
{
    const auto is = [&](int point) { return now.value(point) == 1; };
    const int workMode = int(now.value(4250));
    const int battery = int(now.value(4101));
    const int path = int(now.value(4161));
    const bool charges = is(4220) && is(4224);
    const bool discharges = is(4221) && is(4224);
    const bool rectifierFeeds = is(4220) && is(4221);
    if (charges + discharges + rectifierFeeds > 1)
        return QStringLiteral("power flows both ways");
    if ((is(4222) && is(4223)) != (path == 2) || (is(4218) && is(4223)) != (path == 1) ||
        is(4223) != (path != 0))
        return QStringLiteral("the flow to the load is not that of the output mode");
    const bool combined = workMode == 3;
    if (discharges != (battery == 4) || is(2021) != (battery == 4) ||
        (workMode == 2 || combined) != (battery == 4))
        return QStringLiteral("not all agree on whether the battery supplies");
    if ((workMode == 0) != (path == 0) || (workMode == 4) != (path == 1) || is(2020) != (path == 1))
        return QStringLiteral("work mode and output mode differ");
    if (is(4219) && (now.value(4133) == 0 || is(2368) || is(2029)))
        return QStringLiteral("the rectifier draws from a mains that is not good");
    if (path == 1 && !is(4190))
        return QStringLiteral("a bad bypass supplies");
    if (is(4219) != (now.value(4239) == 1 || now.value(4239) == 2) ||
        is(4220) != (now.value(4239) == 2 && !combined))
        return QStringLiteral("the flow into the rectifier is not that of its state");
    if ((now.value(4239) == 2 && battery == 4) != combined)
        return QStringLiteral("mains and battery supply together, and the mode tells otherwise");
    if (path == 2 && now.value(4240) != 2)
        return QStringLiteral("the inverter supplies without running");
    return QString();
}

/// Powers that do not balance or values out of range, beyond what rounding explains; empty when all is well.
QString TestUnitModel::imbalance(const RegisterImage& now, bool steady)
{
    double outputW = 0;
    double inputW = 0;
    for (int phase = 0; phase < 3; ++phase) {
        const auto at = [&](int point) { return now.value(point + phase); };
        const double kva = at(4175);
        const double kw = at(4178);
        outputW += kw * 1000;
        inputW += at(4133) * at(4136) * at(4142);
        if (!isNear(kva * 1000, at(4163) * at(4166), 70) || !isNear(kw, kva * at(4172), 0.1 + 0.005 * kva) ||
            !isNear(kva * kva, kw * kw + at(4181) * at(4181), 0.12 * 2 * kva + 0.02))
            return QStringLiteral("apparent, active and reactive power do not agree");
        if (!isNear(at(4184), 100 * kva / (now.value(4243) / 3), 1.6))
            return QStringLiteral("the load percentage is not that of the power");
        if (now.value(4161) == 2 && !isNear(at(4163), now.value(4246), 2))
            return QStringLiteral("the inverter's voltage is off");
        if (at(4195) != (now.value(4161) == 1 ? at(4166) : 0))
            return QStringLiteral("the bypass current is not the load's");
    }
    const double batteryW = now.value(4103) * now.value(4105) - now.value(4104) * now.value(4106);
    const bool isConnected = now.value(4101) != 0;
    if (!isNear(batteryW, 0, 1) || (now.value(4103) < 180) == isConnected || now.value(4103) > 300)
        return QStringLiteral("the battery halves differ, or are not what their state says");
    const double bothHalvesW = 2 * now.value(4103) * now.value(4105);
    const bool discharges = now.value(4101) == 4;
    const bool draws = now.value(4239) == 2;
    if (discharges && !draws && steady && !isNear(bothHalvesW, outputW / 0.93, 0.03 * outputW + 250))
        return QStringLiteral("the battery does not carry the load");
    const double besidesW = discharges ? -bothHalvesW * 0.93 / 0.94 : bothHalvesW;
    if (draws && steady && now.value(4161) == 2 &&
        !isNear(inputW, outputW / 0.94 + besidesW + 200, 0.05 * outputW + 250))
        return QStringLiteral("the mains does not carry load and charge");
    const double ratedW = 1000 * now.value(4243) * now.value(4133) / now.value(4244);
    if (draws && discharges && steady && !isNear(inputW, 0.99 * ratedW, 0.03 * ratedW))
        return QStringLiteral("the battery helps a rectifier that could draw more");
    if (now.value(4111) > 100 || now.value(4110) < 0 || now.value(4110) > 10000)
        return QStringLiteral("charge or remaining time is out of range");
    return QString();
}

/// Alarms that cannot hold together, or beside these values; empty when all is well.
QString TestUnitModel::wrongAlarm(const RegisterImage& now)
{
    const auto is = [&](int index) { return now.alarms[size_t(index)] == 1; };
    if (is(22) != is(276) || is(23) != is(277) || is(29) != is(183) || is(28) != (now.value(4101) == 0) ||
        is(24) != (now.value(4190) == 0) || is(368) != (is(256) || is(257) || is(258) || is(259)) ||
        (is(29) && now.value(4161) != 0) || (is(244) && now.value(4161) != 0) || (is(208) && !is(21)) ||
        (is(134) && !is(133)))
        return QStringLiteral("alarms contradict each other or the state");
    return QString();
}

void TestUnitModel::changeSomething(UnitModel& model, QRandomGenerator& random, bool& chargeSet)
{
    const auto pick = [&](std::initializer_list<double> values) {
        return values.begin()[random.bounded(int(values.size()))];
    };
    Site& site = model.site();
    switch (random.bounded(10)) {
    case 0:
    case 1:
        site.mainsOn = !site.mainsOn;
        break;
    case 2:
        site.mainsVoltageV = pick({150, 180, 230, 230, 240, 290});
        site.mainsFrequencyHz = pick({44, 50, 50, 51, 56});
        break;
    case 3:
        site.loadPercent = pick({3, 40, 80, 107, 116, 130, 160, 210});
        break;
    case 4:
        site.loadPercent.reset();
        site.bypassConnected = random.bounded(3) != 0;
        break;
    case 5:
        site.batteryConnected = random.bounded(4) != 0;
        break;
    case 6:
        model.setBatteryCharge(pick({0, 5, 15, 30, 60, 95, 100}));
        chargeSet = true;
        break;
    case 7:
        site.emergencyPressed = random.bounded(5) == 0;
        site.rectifierC = pick({30, 85});
        site.inverterC = pick({30, 85});
        site.batteryC = pick({-5, 25, 50});
        break;
    default: {
        const auto& row = unitmap::commandRows[random.bounded(uint(std::size(unitmap::commandRows)))];
        model.command(int(row.code),
                      random.bounded(2) ? unitmap::noArgument : quint16(1 + random.bounded(3)));
        if (random.bounded(2)) { // or the units would stay off most of the time
            model.command(int(unitmap::Command::ClearFaults), unitmap::noArgument);
            model.command(int(unitmap::Command::StartUp), unitmap::noArgument);
        }
    }
    }
}

void TestUnitModel::randomCourses()
{
    QMap<int, QSet<int>> seen;
    QSet<int> alarms;
    for (quint32 seed = 1; seed <= 12; ++seed) {
        QRandomGenerator random(seed);
        UnitModel model({int(seed), "Test unit"}, seed, 1700000000000);
        int stepsInState = 0;
        for (int ms = 0; ms < 1200000; ms += stepMs) {
            const RegisterImage before = model.image();
            const double chargeBefore = model.state().chargePercent;
            bool chargeSet = false;
            if (random.bounded(80) == 0)
                changeSomething(model, random, chargeSet);
            model.step(stepMs);
            const RegisterImage& now = model.image();
            stepsInState = now.value(4101) == before.value(4101) && !chargeSet ? stepsInState + 1 : 0;
            const QString fault = contradiction(now) + imbalance(now, stepsInState > 2) + wrongAlarm(now);
            QVERIFY2(fault.isEmpty(),
                     qPrintable(QStringLiteral("%1, %2 ms: %3").arg(seed).arg(ms).arg(fault)));
            const double gained = model.state().chargePercent - chargeBefore;
            QVERIFY(chargeSet || (now.value(4101) == 4 ? gained <= 0 : gained >= 0));
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

void TestUnitModel::sameSeedSameCourse()
{
    const auto course = [](quint32 seed) {
        UnitModel model(identity, seed, 0);
        for (int i = 0; i < 500; ++i)
            model.step(stepMs);
        return model.image().inputs;
    };
    QVERIFY(course(5) == course(5));
    QVERIFY(course(5) != course(6));
}

void TestUnitModel::commands_data()
{
    QTest::addColumn<Orders>("before");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("argument");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("point");
    QTest::addColumn<double>("value"); // five seconds later

    const int none = unitmap::noArgument;
    const int done = int(CommandResult::Done);
    const int notNow = int(CommandResult::NotNow);
    QTest::newRow("self-test") << Orders{} << 0 << none << done << 4259 << 1.0;
    QTest::newRow("discharge") << Orders{} << 0 << 10 << done << 4259 << 2.0;
    QTest::newRow("discharge to low") << Orders{} << 2 << none << done << 4101 << 4.0;
    QTest::newRow("cancel") << Orders{{0, 2, none}} << 3 << none << done << 4101 << 3.0;
    QTest::newRow("shut down") << Orders{} << 4 << none << done << 4163 << 0.0;
    QTest::newRow("off charges the battery") << Orders{} << 4 << none << done << 4224 << 1.0;
    QTest::newRow("start up") << Orders{{0, 4, none}} << 7 << none << done << 4250 << 1.0;
    QTest::newRow("shut down to bypass") << Orders{} << 9 << none << done << 4240 << 0.0;
    QTest::newRow("to bypass") << Orders{} << 10 << none << done << 4161 << 1.0;
    QTest::newRow("to bypass keeps the inverter") << Orders{} << 10 << none << done << 4240 << 2.0;
    QTest::newRow("to inverter") << Orders{{0, 9, none}} << 11 << none << done << 4161 << 2.0;
    QTest::newRow("test on bypass") << Orders{{0, 10, none}} << 0 << none << notNow << 4259 << 0.0;
    QTest::newRow("transfer while off") << Orders{{0, 4, none}} << 11 << none << notNow << 4161 << 0.0;
    QTest::newRow("no minutes") << Orders{} << 0 << 0 << int(CommandResult::BadArgument) << 4259 << 0.0;
    QTest::newRow("unknown") << Orders{} << 5 << none << int(CommandResult::UnknownCode) << 4250 << 1.0;
}

void TestUnitModel::commands()
{
    QFETCH(Orders, before);
    QFETCH(int, code);
    QFETCH(int, argument);
    QFETCH(int, point);
    QFETCH(double, value);
    UnitModel model(identity, 3, 0);
    const auto runFiveSeconds = [&] {
        for (int i = 0; i < 50; ++i)
            model.step(stepMs);
    };
    for (const Order& order : qAsConst(before))
        QCOMPARE(int(model.command(order.code, quint16(order.argument))), int(CommandResult::Done));
    runFiveSeconds();
    QTEST(int(model.command(code, quint16(argument))), "result");
    runFiveSeconds();
    QCOMPARE(model.image().value(point), value);
}

QTEST_APPLESS_MAIN(TestUnitModel)
#include "tst_unitmodel.moc"
