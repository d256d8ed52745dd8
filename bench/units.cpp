// Many units in one headless host, which runs as a user starts it: what each costs, and whether its cycles
// begin in time.

#include "measures.h"
#include "querytimes.h"
#include "results.h"
#include "sampling.h"
#include "unitsimulator.h"
#include "workplace.h"

#include <QThread>

#include <ctime>
#include <map>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int unitsOfOneSimulator = 64; // it takes as many connections
constexpr int fewUnits = 16;            // what more units are held against
constexpr int rounds = 3;
constexpr unsigned long windowS = 6;
constexpr int startPatienceMs = 60000;

// What is known of a running host at one moment.
struct Snapshot
{
    double processorUs = 0;
    double unitsProcessorS = 0; // taken on the units' processor, by nobody nice
    std::uint64_t queries = 0;
    std::uint64_t failures = 0;
    std::uint64_t late = 0;
};

struct Outcome
{
    double processorUsPerCycle = 0;
    double cyclesPerSecond = 0; // of one unit
    double lateCycles = 0;
    double worstDelayMs = 0;
    double failedCycles = 0;
    double unitsProcessorPercent = 0;
    double residentKb = 0;
    double threads = 0;
};

// What a processor has spent on programs and the system, without nice ones, since the machine's start.
double takenS(int processor)
{
    QFile file(QStringLiteral("/proc/stat"));
    file.open(QIODevice::ReadOnly);
    const QByteArray name = "cpu" + QByteArray::number(processor) + ' ';
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        if (!line.startsWith(name))
            continue;
        const QList<QByteArray> ticks = line.simplified().split(' '); // name, user, nice, system, idle, ...
        return (ticks.value(1).toDouble() + ticks.value(3).toDouble()) /
               static_cast<double>(::sysconf(_SC_CLK_TCK));
    }
    return 0;
}

// A host in a folder of its own with the timing driver in the driver's place.
class TimedHost
{
public:
    TimedHost(const QString& folder, const QByteArray& units)
    {
        copy(QStringLiteral(RUN_DIR "/ups-host"), QStringLiteral("ups-host"));
        copy(QStringLiteral(RUN_DIR "/libvek5m_10-30k_Client.so"),
             QStringLiteral("libvek5m_10-30k_Client.so"));
        copy(QStringLiteral(RUN_DIR "/libvek5m_10-30k.so"), QLatin1String(drivenLibrary));
        copy(QCoreApplication::applicationDirPath() + QStringLiteral("/timing/libvek5m_10-30k.so"),
             QStringLiteral("libvek5m_10-30k.so"));
        writeFile(unitsFile(folder), units);
        writeFile(QLatin1String(queryTimesFile), QByteArray(sizeof(QueryTimes), '\0'));
        mapTimes();

        const OnProcessor here(Role::Client);
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.start(folder + QStringLiteral("/ups-host"), {QStringLiteral("--headless")});
        if (!m_process.waitForStarted())
            fail(QStringLiteral("the host does not start: %1").arg(m_process.errorString()));
    }
    ~TimedHost()
    {
        m_process.terminate();
        if (!m_process.waitForFinished())
            m_process.kill();
        m_process.waitForFinished();
        ::munmap(m_times, sizeof(QueryTimes));
    }
    Q_DISABLE_COPY(TimedHost)

    // Until every unit has had a few cycles.
    void waitForUnits(int count)
    {
        QElapsedTimer timer;
        timer.start();
        while (!areAllServed(count)) {
            if (timer.hasExpired(startPatienceMs) || m_process.state() != QProcess::Running)
                fail(QStringLiteral("the host does not reach %1 units: %2")
                         .arg(QString::number(count),
                              QString::fromLocal8Bit(m_process.readAllStandardError())));
            QThread::msleep(100);
        }
        for (QueryTimes::Unit& unit : m_times->units)
            unit.worstDelayNs = 0;
    }

    Snapshot look() const
    {
        Snapshot now;
        clockid_t clock = 0;
        timespec used = {};
        if (::clock_getcpuclockid(pid_t(m_process.processId()), &clock) == 0)
            ::clock_gettime(clock, &used);
        now.processorUs = static_cast<double>(used.tv_sec) * 1e6 + static_cast<double>(used.tv_nsec) / 1000;
        now.unitsProcessorS = takenS(processorOf(Role::Unit));
        for (const QueryTimes::Unit& unit : m_times->units) {
            now.queries += unit.queries;
            now.failures += unit.failures;
            now.late += unit.late;
        }
        return now;
    }

    double worstDelayMs() const
    {
        std::int64_t worst = 0;
        for (const QueryTimes::Unit& unit : m_times->units)
            worst = std::max<std::int64_t>(worst, unit.worstDelayNs);
        return static_cast<double>(worst) / 1e6;
    }

    // A number of /proc/PID/status.
    double status(const QByteArray& key) const
    {
        QFile file(QStringLiteral("/proc/%1/status").arg(m_process.processId()));
        if (!file.open(QIODevice::ReadOnly))
            fail(QStringLiteral("the host has ended"));
        const QByteArray text = file.readAll();
        const QByteArray value = text.mid(text.indexOf('\n' + key + ':') + key.size() + 2);
        return value.simplified().split(' ').first().toDouble();
    }

private:
    static void copy(const QString& from, const QString& to)
    {
        QFile::remove(to);
        QFile source(from);
        if (!source.copy(to))
            fail(QStringLiteral("cannot copy %1: %2").arg(from, source.errorString()));
    }

    void mapTimes()
    {
        QFile file(QString::fromLatin1(queryTimesFile));
        file.open(QIODevice::ReadWrite);
        void* const memory =
            ::mmap(nullptr, sizeof(QueryTimes), PROT_READ | PROT_WRITE, MAP_SHARED, file.handle(), 0);
        if (memory == MAP_FAILED)
            fail(QStringLiteral("cannot look into the times of the queries"));
        m_times = static_cast<QueryTimes*>(memory);
    }

    bool areAllServed(int count) const
    {
        constexpr std::uint64_t fewQueries = 10;
        return std::all_of(m_times->units, m_times->units + count,
                           [](const QueryTimes::Unit& unit) { return unit.queries >= fewQueries; });
    }

    QProcess m_process;
    QueryTimes* m_times = nullptr;
};

// A thread, a socket and what an event loop needs take several descriptors for each unit.
void raiseDescriptorLimit()
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

Outcome run(int unitCount)
{
    const Workplace folder;
    std::vector<std::unique_ptr<UnitSimulator>> simulators;
    QByteArray configuration;
    for (int unit = 0; unit < unitCount; ++unit) {
        const int address = unit % unitsOfOneSimulator + 1;
        if (address == 1) {
            QStringList arguments{QStringLiteral("--tcp")};
            for (int i = 1; i <= std::min(unitCount, unitsOfOneSimulator); ++i)
                arguments << QStringLiteral("--address") << QString::number(i);
            simulators.push_back(std::make_unique<UnitSimulator>(arguments));
        }
        configuration += "[U" + QByteArray::number(unit) + "]\ncommType=1\nipAddr=127.0.0.1\nport=" +
                         QByteArray::number(simulators.back()->port()) +
                         "\naddr=" + QByteArray::number(address) + '\n';
    }
    TimedHost host(folder.path(), configuration);
    host.waitForUnits(unitCount);
    const Snapshot before = host.look();
    QElapsedTimer timer;
    timer.start();
    QThread::sleep(windowS);
    const Snapshot after = host.look();
    const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;

    const auto cycles = static_cast<double>(after.queries - before.queries);
    Outcome outcome;
    outcome.processorUsPerCycle = (after.processorUs - before.processorUs) / cycles;
    outcome.cyclesPerSecond = cycles / seconds / unitCount;
    outcome.lateCycles = static_cast<double>(after.late - before.late);
    outcome.failedCycles = static_cast<double>(after.failures - before.failures);
    outcome.unitsProcessorPercent = 100 * (after.unitsProcessorS - before.unitsProcessorS) / seconds;
    outcome.worstDelayMs = host.worstDelayMs();
    outcome.residentKb = host.status("VmRSS");
    outcome.threads = host.status("Threads");
    return outcome;
}

using Outcomes = std::vector<Outcome>;

double medianOf(const Outcomes& outcomes, double Outcome::*member)
{
    std::vector<double> values;
    for (const Outcome& outcome : outcomes)
        values.push_back(outcome.*member);
    return median(values);
}

double sumOf(const Outcomes& outcomes, double Outcome::*member)
{
    double sum = 0;
    for (const Outcome& outcome : outcomes)
        sum += outcome.*member;
    return sum;
}

void addRow(Results& results, const QString& what, const char* unit, double ours,
            std::optional<double> bar = {}, std::optional<double> peer = {}, const QString& note = {})
{
    results.add({QStringLiteral("units"), what, QLatin1String(unit), ours, peer, bar, note});
}

void addRowsOf(Results& results, int count, const Outcomes& outcomes, double fewUnitsUs)
{
    const QString of = QStringLiteral("%1: ").arg(count);
    const double us = medianOf(outcomes, &Outcome::processorUsPerCycle);
    const QString time = of + QStringLiteral("processor time of a cycle");
    if (count > fewUnits)
        addRow(results, time, "us", us, 1.2, fewUnitsUs, QStringLiteral("at %1 units").arg(fewUnits));
    else
        addRow(results, time, "us", us);
    addRow(results, of + QStringLiteral("cycles begun more than 50 ms late"), "",
           sumOf(outcomes, &Outcome::lateCycles), count == 64 ? std::optional(0.0) : std::nullopt, {},
           QStringLiteral("all rounds; the latest by %1 ms")
               .arg(medianOf(outcomes, &Outcome::worstDelayMs), 0, 'f', 0));
    addRow(results, of + QStringLiteral("failed cycles"), "", sumOf(outcomes, &Outcome::failedCycles));
    addRow(results, of + QStringLiteral("cycles a second of one unit"), "",
           medianOf(outcomes, &Outcome::cyclesPerSecond), {}, {},
           QStringLiteral("the simulated units' processor: %1 %")
               .arg(medianOf(outcomes, &Outcome::unitsProcessorPercent), 0, 'f', 0));
    addRow(results, of + QStringLiteral("threads"), "", medianOf(outcomes, &Outcome::threads));
}

} // namespace

void measureUnits(Results& results)
{
    raiseDescriptorLimit();
    std::map<int, Outcomes> outcomes;
    for (int round = 0; round < rounds; ++round) {
        for (const int count : {1, 16, 64, 256})
            outcomes[count].push_back(run(count));
    }
    for (const auto& of : outcomes)
        addRowsOf(results, of.first, of.second, medianOf(outcomes[fewUnits], &Outcome::processorUsPerCycle));
    for (const auto& step : {std::pair(16, 64), std::pair(64, 256)}) {
        const double more = medianOf(outcomes[step.second], &Outcome::residentKb) -
                            medianOf(outcomes[step.first], &Outcome::residentKb);
        addRow(results,
               QStringLiteral("resident memory of a further unit, %1 to %2").arg(step.first).arg(step.second),
               "KB", more / (step.second - step.first), 600);
    }
}
