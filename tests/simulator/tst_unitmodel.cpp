#include "alarmrules.h"
#include "mainsplan.h"
#include "unitmodel.h"

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
    void invariants_data();
    void invariants();
    void lowBatteryEndsTheSupply();
    void sameSeedSameCourse();
    void commands_data();
    void commands();

private:
    static QString contradiction(const RegisterImage& now);
    static QString imbalance(const RegisterImage& now, bool steady);
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
    if (discharges != (battery == 4) || is(2021) != (battery == 4) || (workMode == 2) != (battery == 4))
        return QStringLiteral("not all agree on whether the battery supplies");
    if ((workMode == 0) != (path == 0) || (workMode == 4) != (path == 1) || is(2020) != (path == 1))
        return QStringLiteral("work mode and output mode differ");
    if (is(4219) && now.value(4133) == 0)
        return QStringLiteral("the rectifier draws from a mains that is not there");
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
        const bool supplied = now.value(4161) != 0;
        const double kva = at(4175);
        const double kw = at(4178);
        outputW += kw * 1000;
        inputW += at(4133) * at(4136) * at(4142);
        if (!isNear(kva * 1000, at(4163) * at(4166), 70) || !isNear(kw, kva * at(4172), 0.12) ||
            !isNear(kva * kva, kw * kw + at(4181) * at(4181), 0.12 * 2 * kva + 0.02))
            return QStringLiteral("apparent, active and reactive power do not agree");
        if (!isNear(at(4184), 100 * kva / (now.value(4243) / 3), 1))
            return QStringLiteral("the load percentage is not that of the power");
        if (supplied && (at(4184) < 34 || at(4184) > 61 || at(4163) < 220 || at(4163) > 240))
            return QStringLiteral("an output value is implausible");
        if (at(4195) != (now.value(4161) == 1 ? at(4166) : 0))
            return QStringLiteral("the bypass current is not the load's");
    }
    const double batteryW = now.value(4103) * now.value(4105) - now.value(4104) * now.value(4106);
    if (!isNear(batteryW, 0, 1) || now.value(4103) < 180 || now.value(4103) > 300)
        return QStringLiteral("the battery halves differ");
    const double bothHalvesW = 2 * now.value(4103) * now.value(4105);
    if (now.value(4101) == 4 && steady && !isNear(bothHalvesW, outputW / 0.93, 0.03 * outputW))
        return QStringLiteral("the battery does not carry the load");
    if (now.value(4239) == 2 && now.value(4161) == 2 &&
        !isNear(inputW, outputW / 0.94 + bothHalvesW + 200, 0.05 * outputW))
        return QStringLiteral("the mains does not carry load and charge");
    if (now.value(4111) > 100 || now.value(4110) < 0 || now.value(4110) > 10000)
        return QStringLiteral("charge or remaining time is out of range");
    return QString();
}

void TestUnitModel::invariants_data()
{
    QTest::addColumn<Orders>("orders");
    QTest::addColumn<QSet<int>>("workModes");

    QTest::newRow("mains failures alone") << Orders{} << QSet<int>{1, 2};
    QTest::newRow("self-test across a failure, discharge, cancelled discharge")
        << Orders{{30, 0, -1}, {100, 0, 2}, {260, 2, -1}, {300, 3, -1}} << QSet<int>{1, 2};
    QTest::newRow("to bypass and back") << Orders{{25, 10, -1}, {120, 11, -1}} << QSet<int>{1, 2, 4};
    QTest::newRow("shut down to bypass, start up")
        << Orders{{60, 9, -1}, {200, 7, -1}} << QSet<int>{0, 1, 2, 4};
    QTest::newRow("shut down, start up into a failure")
        << Orders{{50, 4, -1}, {73, 7, -1}} << QSet<int>{0, 1, 2};
}

void TestUnitModel::invariants()
{
    QFETCH(Orders, orders);
    QFETCH(QSet<int>, workModes);
    UnitModel model(identity, 7, 1700000000000);
    QSet<int> seen;
    QVector<int> raised(unitmap::alarmPointCount, 0);
    QVector<int> cleared(unitmap::alarmPointCount, 0);
    int stepsInState = 0;
    for (int ms = 0; ms < 600000; ms += stepMs) {
        const RegisterImage before = model.image();
        for (const Order& order : qAsConst(orders)) {
            if (order.second * 1000 == ms)
                QCOMPARE(int(model.command(order.code, quint16(order.argument))), int(CommandResult::Done));
        }
        model.setMainsPresent(isMainsPresent(ms, identity.address));
        model.step(stepMs);
        const RegisterImage& now = model.image();
        stepsInState = now.value(4101) == before.value(4101) ? stepsInState + 1 : 0;
        const QString fault = contradiction(now) + imbalance(now, stepsInState > 2);
        QVERIFY2(fault.isEmpty(), qPrintable(QStringLiteral("after %1 ms: %2").arg(ms).arg(fault)));
        seen.insert(int(now.value(4250)));
        for (int i = 0; i < unitmap::alarmPointCount; ++i) {
            raised[i] += now.alarms[size_t(i)] > before.alarms[size_t(i)];
            cleared[i] += now.alarms[size_t(i)] < before.alarms[size_t(i)];
        }
    }
    QCOMPARE(seen, workModes);
    QCOMPARE(cleared, raised);
    for (int index : {24, 161, 243, 257, 368})
        QVERIFY2(raised.at(index) >= 19, qPrintable(QString::number(index)));
}

void TestUnitModel::lowBatteryEndsTheSupply()
{
    UnitModel model(identity, 1, 0);
    model.writeSettings(18, {1}); // 1 Ah is soon used up
    QCOMPARE(model.image().value(4109), 1.0);
    QVector<int> order;
    QSet<int> active;
    const auto run = [&](bool mains, int seconds) {
        model.setMainsPresent(mains);
        for (int ms = 0; ms < seconds * 1000; ms += stepMs) {
            model.step(stepMs);
            for (int index : {22, 23, 244}) {
                if (model.image().value(2000 + index) == 1 && !active.contains(index))
                    order.append(index);
                if (model.image().value(2000 + index) == 1)
                    active.insert(index);
                else
                    active.remove(index);
            }
        }
    };
    run(false, 600);
    QCOMPARE(order, (QVector<int>{22, 23, 244}));
    QCOMPARE(model.image().value(4250), 0.0);
    QCOMPARE(model.image().value(4163), 0.0);
    run(true, 4);
    QCOMPARE(model.image().value(4250), 4.0); // the bypass bridges the inverter's start
    QVERIFY(model.image().value(2212) == 1);
    QCOMPARE(int(model.command(12, unitmap::noArgument)), int(CommandResult::Done));
    run(true, 2);
    QCOMPARE(model.image().value(2212), 0.0);
    QCOMPARE(model.image().value(4250), 1.0);
    QCOMPARE(model.image().value(4101), 2.0);
    run(true, 1200);
    QVERIFY(active.isEmpty());
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
