// 64 units in one window, half of them out of reach in every way there is: how soon it is open, and for how
// long at the most it takes no notice of its user.

#include "blockwatch.h"
#include "hostoptions.h"
#include "ownfolder.h"
#include "person.h"
#include "pluginlibrary.h"
#include "screen.h"
#include "simulatorprocess.h"
#include "unitlist.h"

#include <QLoggingCategory>
#include <QTabWidget>
#include <QTcpServer>
#include <QtTest>

namespace {

constexpr bool isMeasured = fewerBy == 1; // builds that take the stack of every allocation tell no times
constexpr int unitCount = 64;
constexpr int lineCount = 4; // with units that answer
constexpr int unitsPerLine = 8;
constexpr int steps = isMeasured ? 180 : 4; // through units and pages
constexpr int stepMs = 60;                  // as fast as keys repeat

// Of the thread's own time, and by the clock, which counts other programs; a silent unit makes wait longer.
constexpr double ownLimitMs = 2 * longestBlockMs;
constexpr double blockLimitMs = 800;

int heardCount()
{
    int count = 0;
    for (int row = 0; row < unitCount; ++row)
        count += screen::unitText(row).contains(QLatin1String("Load")) ? 1 : 0;
    return count;
}

} // namespace

class ManyUnitsTest : public QObject
{
    Q_OBJECT

private slots:
    void staysFluidWithHalfOutOfReach();

private:
    QByteArray reachableUnits();
    QByteArray unreachableUnits();

    std::vector<std::unique_ptr<Simulator>> m_lines;
    QTcpServer m_blackHole; // takes connections and says nothing
};

QByteArray ManyUnitsTest::reachableUnits()
{
    QByteArray sections;
    for (int line = 0; line < lineCount; ++line) {
        const QString port = QStringLiteral("line%1").arg(line);
        QStringList arguments = {QStringLiteral("--serial"), port, QStringLiteral("--baud"),
                                 QStringLiteral("0")};
        for (int address = 1; address <= unitsPerLine; ++address) {
            arguments += {QStringLiteral("--address"), QString::number(address)};
            sections += "[" + port.toLatin1() + "-" + QByteArray::number(address) +
                        "]\nportName=" + port.toLatin1() + "\naddr=" + QByteArray::number(address) + "\n";
        }
        m_lines.push_back(std::make_unique<Simulator>(arguments));
        if (!m_lines.back()->waitReady(port.toLatin1()))
            return {};
    }
    return sections;
}

// A line that is dead, then ports that refuse, that take connections and say nothing, or that are not there.
QByteArray ManyUnitsTest::unreachableUnits()
{
    m_lines.push_back(std::make_unique<Simulator>(words(QStringLiteral("--serial dead --baud 0"))));
    if (!m_blackHole.listen(QHostAddress::LocalHost) || !m_lines.back()->waitReady("dead"))
        return {};
    m_lines.back()->signal(SIGSTOP);
    const QByteArray tcp = "commType=1\nipAddr=127.0.0.1\nport=";
    const QByteArray ways[] = {tcp + "1", tcp + QByteArray::number(m_blackHole.serverPort()),
                               "portName=missing"};
    QByteArray sections = "[dead]\nportName=dead\n";
    for (int i = 1; i < unitCount - lineCount * unitsPerLine; ++i)
        sections += "[silent-" + QByteArray::number(i) + "]\n" + ways[i % 3] + "\n";
    return sections;
}

void ManyUnitsTest::staysFluidWithHalfOutOfReach()
{
    // Units out of reach say so in each cycle.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ndefault.warning=false"));
    const PluginLibrary plugin(QStringLiteral(PLUGIN_FILE));
    QVERIFY2(plugin.factory(), qPrintable(plugin.error()));
    const QByteArray reachable = reachableUnits();
    const QByteArray unreachable = unreachableUnits();
    QVERIFY(!reachable.isEmpty() && !unreachable.isEmpty());
    QFile file(unitlist::defaultFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(reachable + unreachable);
    file.close();

    Person person;
    QElapsedTimer sinceStart;
    qint64 openMs = 0;
    std::unique_ptr<BlockWatch> watch;
    QElapsedTimer sinceStep;
    person.sees("devStacketTable")
        .does([&] { openMs = sinceStart.elapsed(); })
        .sees("all that can be reached", [] { return heardCount() == lineCount * unitsPerLine; })
        .does([&] {
            qInfo("window with pages after %lld ms, all reachable units after %lld ms", openMs,
                  sinceStart.elapsed());
            watch = std::make_unique<BlockWatch>();
            sinceStep.start();
        });
    for (int step = 0; step < steps; ++step)
        person.sees("the time of a step", [&] { return sinceStep.hasExpired(stepMs); }).does([&, step] {
            sinceStep.start();
            const Qt::Key key = step < steps / 2 ? Qt::Key_Down : Qt::Key_Up;
            if (step % 3 != 2)
                screen::key(key, Qt::ControlModifier);
            else if (auto* tabs = screen::find<QTabWidget>("devStacketTable"))
                tabs->setCurrentIndex((tabs->currentIndex() + 1) % 4);
        });
    double longestMs = 0;
    double longestCpuMs = 0;
    person.does([&] {
        longestMs = watch->longestMs();
        longestCpuMs = watch->longestCpuMs();
        watch.reset();
        qInfo("longest block %.1f ms, %.1f ms of this thread's own time; bar 50 ms", longestMs, longestCpuMs);
        screen::key(Qt::Key_Q, Qt::ControlModifier);
        sinceStep.start();
    });
    HostOptions options;
    options.journalFile = QStringLiteral("journal.sqlite");
    sinceStart.start();
    QCOMPARE(person.use(options, *plugin.factory()), 0);
    qInfo("ended after %lld ms", sinceStep.elapsed());
    if (isMeasured)
        QVERIFY(longestMs < blockLimitMs && longestCpuMs < ownLimitMs);
}

int main(int argc, char* argv[])
{
    return ownfolder::run<ManyUnitsTest>(argc, argv);
}

#include "tst_manyunits.moc"
