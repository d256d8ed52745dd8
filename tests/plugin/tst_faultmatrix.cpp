#include "faultcourse.h"
#include "rig.h"

#include <QDateTime>
#include <QtTest>

using namespace faultcourse;

namespace {

constexpr int retries = 2;
constexpr int timeoutMs = 1000;      // a serial port's by default, a TCP connection's always
constexpr int cycleMs = 800;         // the pause of 100 ms and requests that are answered, on a busy machine
constexpr int pollIntervalMs = 1000; // as configured
constexpr int reconnectMs = 5000;    // the pause before a TCP connection is made
constexpr int limitMs = 120000;      // for all to be over, generous: sanitizers, two cores, other tests

struct FaultRow
{
    const char* fault;
    int times;    ///< queries that it meets
    int lengthMs; ///< from the last of them to the unit's return
    Outcome serialFirst;
    Outcome serialLast; ///< when the last request is met: what disturbs the next one meets the next query
    Outcome tcp;
    bool isOutage; ///< nobody waits for it inside a query
    bool closes;   ///< a TCP connection has to be made anew
};

// clang-format off
constexpr FaultRow quickRows[] = {
    {"no-answer",    3,     0, Fails,  Fails,  Fails, false, false},
    {"late 500",     3,   500, Copes,  Copes,  Copes, false, false},
    {"late 1500",    3,  1500, Fails,  Fails,  Fails, false, false},
    {"wrong-crc",    3,     0, Fails,  Fails,  Fails, false, false},
    {"wrong-unit",   3,     0, Fails,  Fails,  Fails, false, false},
    {"truncated",    3,     0, Fails,  Fails,  Fails, false, false},
    {"duplicated",   3,     0, Fails,  Either, Fails, false, false},
    {"split",        3,   800, Copes,  Copes,  Fails, false, false},
    {"exception 6",  3,     0, Fails,  Fails,  Fails, false, false},
    {"noise",        3,     0, Fails,  Either, Fails, false, false},
    {"reset",        2,   100, Fails,  Fails,  Fails, true,  true},
    {"refused 7",    1,  7000, Fails,  Fails,  Fails, true,  true},
    {"black-hole 5", 1,  5000, Fails,  Fails,  Fails, true,  false},
};
constexpr FaultRow longRows[] = {
    {"late 3000",     4,  3000, Either, Either, Either, false, false},
    {"late 5000",     4,  5000, Either, Either, Either, false, false},
    {"no-answer",     9,     0, Fails,  Fails,  Fails,  false, false},
    {"truncated 2",   9,     0, Fails,  Fails,  Fails,  false, false},
    {"split 15",      4,  2400, Copes,  Copes,  Fails,  false, false},
    {"noise 256",     9,     0, Fails,  Either, Fails,  false, false},
    {"reset",         5,   100, Fails,  Fails,  Fails,  true,  true},
    {"refused 25",    1, 25000, Fails,  Fails,  Fails,  true,  true},
    {"black-hole 25", 1, 25000, Fails,  Fails,  Fails,  true,  false},
};
// clang-format on

struct Unit
{
    QString key;
    QString fault;
    Expectation expected;
    qint64 overMs = 0; ///< when the last of it must have been told; 0 while faults are still to come
    QVector<Report> reports;
};

/// A tenth of a second each, as the units step: in every block something changes, and no value comes twice
/// within the time that counts.
QByteArray restlessScenario()
{
    QByteArray lines = "0 random alarms 2 0.5\n";
    for (int step = 0; step < 10 * limitMs / 1000; ++step) {
        const QByteArray number = QByteArray::number(step);
        lines += "+0.1 point 4032 " + number + "\n+0 point 4145 " + QByteArray::number(2000 + step);
        lines += "\n+0 point 4260 " + QByteArray::number(4000 + step) + "\n+0 setting 3055 " + number;
        lines += "\n+0 setting 3087 " + QByteArray::number(160 + step % 90) + '\n';
    }
    return lines;
}

Expectation expectationOf(const FaultRow& row, bool isTcp, bool isFirst, bool isPolled)
{
    Expectation expected;
    expected.outcome = isTcp ? row.tcp : isFirst ? row.serialFirst : row.serialLast;
    expected.faults = row.times;
    expected.retries = retries;
    expected.lengthMs = row.lengthMs;
    // Whatever disturbed a query is read away until the line has been silent for a time-out.
    expected.failureMs =
        2 * timeoutMs + cycleMs + (row.isOutage ? 0 : row.lengthMs) + (isPolled ? pollIntervalMs : 0);
    expected.pauseMs = isTcp && row.closes ? reconnectMs : 0;
    return expected;
}

int faultsSoFar(const Rig& rig, const Unit& unit)
{
    QFile trace(rig.path(unit.key + QStringLiteral(".trace")));
    return trace.open(QIODevice::ReadOnly) ? trace.readAll().count("\"fault\"") : 0;
}

QByteArray judgeAll(const Rig& rig, const std::vector<Unit>& units)
{
    QStringList wrong;
    for (const Unit& unit : units) {
        const Truth truth(rig.trace(unit.key + QStringLiteral(".trace")));
        const QString text = judge(unit.expected, unit.reports, truth);
        if (!text.isEmpty())
            wrong.append(unit.key + QStringLiteral(", ") + unit.fault + QStringLiteral(": ") + text);
    }
    return wrong.join(QLatin1Char('\n')).toUtf8();
}

} // namespace

// Every fault of line or unit against the built plugin in the built host: no wrong value, the loss told, and
// values again when the unit is back. One unit for each fault, all in one host.
class tst_FaultMatrix : public QObject
{
    Q_OBJECT

private slots:
    void faults_data();
    void faults();

private:
    static QStringList startUnit(Rig& rig, const Unit& unit, bool isTcp);
    static QStringList readUnits(Rig& rig, std::vector<Unit>& units);
};

void tst_FaultMatrix::faults_data()
{
    QTest::addColumn<QString>("request"); // of a query, that the faults meet
    QTest::addColumn<bool>("isPolled");
    const QString first = QStringLiteral("function 2 block 0");
    const QString last = QStringLiteral("function 3 block 87");
    QTest::newRow("first request") << first << SWAPPED;
    QTest::newRow("last request") << last << !SWAPPED;
}

QStringList tst_FaultMatrix::startUnit(Rig& rig, const Unit& unit, bool isTcp)
{
    QStringList options{QStringLiteral("--scenario"), QStringLiteral("restless"),
                        QStringLiteral("--trace"),    QString(unit.key + QStringLiteral(".trace")),
                        QStringLiteral("--fault"),    unit.fault};
    QStringList lines{QString(QLatin1Char('[') + unit.key + QLatin1Char(']')),
                      QStringLiteral("retries=%1").arg(retries),
                      QStringLiteral("interval=%1").arg(pollIntervalMs / 1000)};
    if (!isTcp) {
        // At its own pace, so that all of a dozen units' reports can be printed and read.
        options << QStringLiteral("--serial") << unit.key << QStringLiteral("--baud")
                << QStringLiteral("38400");
        rig.startUnits(unit.key, options);
        return lines << QString(QStringLiteral("portName=") + unit.key);
    }
    const QString ready = rig.startUnits(unit.key, options << QStringLiteral("--tcp") << QStringLiteral("0"));
    return lines << QStringLiteral("commType=1") << QStringLiteral("ipAddr=127.0.0.1")
                 << QString(QStringLiteral("port=") + ready.section(QLatin1Char(':'), -1));
}

// Takes what the host has told. Returns the faults that are not over, or whose end may not have been told
// yet.
QStringList tst_FaultMatrix::readUnits(Rig& rig, std::vector<Unit>& units)
{
    const QList<QJsonObject> events = rig.takeEvents();
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    QStringList awaited;
    for (Unit& unit : units) {
        for (const QJsonObject& event : events) {
            if (event.value(QStringLiteral("unit")).toString() == unit.key)
                unit.reports.append(reportOf(event, nowMs));
        }
        const Expectation& expected = unit.expected;
        if (!unit.overMs && faultsSoFar(rig, unit) >= expected.faults)
            unit.overMs = nowMs + expected.lengthMs + expected.failureMs + expected.pauseMs + timeoutMs;
        if (!unit.overMs || nowMs <= unit.overMs)
            awaited.append(unit.fault);
    }
    return awaited;
}

void tst_FaultMatrix::faults()
{
    QFETCH(QString, request);
    QFETCH(bool, isPolled);
    Rig rig;
    rig.writeFile(QStringLiteral("restless"), restlessScenario());
    std::vector<Unit> units;
    QStringList lines;
    for (const FaultRow& row : TEST_ROWS) {
        for (const bool isTcp : {false, true}) {
            const bool isFirst = request.contains(QLatin1String("function 2"));
            Unit unit;
            unit.key = (isTcp ? QStringLiteral("tcp%1") : QStringLiteral("serial%1")).arg(units.size());
            unit.fault = QStringLiteral("%1 %2 request %3 times %4")
                             .arg(QLatin1String(row.fault), request)
                             .arg(isPolled ? 3 : 12)
                             .arg(row.times);
            unit.expected = expectationOf(row, isTcp, isFirst, isPolled);
            lines += startUnit(rig, unit, isTcp);
            units.push_back(std::move(unit));
        }
    }
    rig.writeUnits(lines);
    rig.startHost(isPolled ? QStringList(QStringLiteral("--poll")) : QStringList());
    QStringList awaited;
    QTRY_VERIFY2_WITH_TIMEOUT((awaited = readUnits(rig, units)).isEmpty(),
                              qPrintable(awaited.join(QLatin1Char('\n'))), limitMs);
    QCOMPARE(rig.stopHost(), 0);
    const QByteArray wrong = judgeAll(rig, units);
    QVERIFY2(wrong.isEmpty(), wrong.constData());
}

QTEST_GUILESS_MAIN(tst_FaultMatrix)
#include "tst_faultmatrix.moc"
