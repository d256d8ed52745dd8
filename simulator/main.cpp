#include "injector.h"
#include "options.h"
#include "requestrouter.h"
#include "scenarioparser.h"
#include "scenariosource.h"
#include "serialline.h"
#include "simulatedunit.h"
#include "tcpserver.h"
#include "trace.h"
#include "unitpast.h"

#include <QCoreApplication>
#include <QDateTime>

#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <thread>

using namespace simulation;

namespace {

enum ExitStatus
{
    Stopped = 0,
    NoResource = 1,
    WrongUsage = 2
};

using Units = std::vector<std::unique_ptr<SimulatedUnit>>;

int fail(ExitStatus status, const QString& reason)
{
    std::fprintf(stderr, "ups-sim: %s\n", qPrintable(reason));
    return status;
}

void announce(const QString& line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

/// The units have one civil time of their own, without time zones: it starts as this machine's local time.
std::int64_t localCivilMs()
{
    const QDateTime now = QDateTime::currentDateTime();
    return QDateTime(now.date(), now.time(), Qt::UTC).toMSecsSinceEpoch();
}

/// What is wrong with a fault of a scenario; empty when nothing is. `take` gets the good ones.
std::string readFault(const std::string& text, const std::function<void(const faults::Plan&)>& take)
{
    QString error;
    const std::optional<faults::Plan> plan = faults::parse(QString::fromStdString(text), &error);
    if (plan)
        take(*plan);
    return error.toStdString();
}

/// Reads the scenario; the exit status says what kind of thing is wrong with it.
ExitStatus readScenario(const QString& name, Scenario& scenario, QString* error)
{
    const std::optional<QByteArray> text = scenarioText(name, error);
    if (!text)
        return NoResource;
    const FaultHook check = [](const std::string& fault) { return readFault(fault, [](const auto&) {}); };
    std::optional<Scenario> read = parseScenario(*text, name, check, error);
    if (!read)
        return WrongUsage;
    scenario = std::move(*read);
    return Stopped;
}

/// Every unit plays the scenario; what it does to the line is left to the first, lest it happen twice.
Units makeUnits(const Options& options, const Scenario& scenario, faults::Injector& faults, Trace* trace)
{
    Units units;
    for (const UnitIdentity& identity : options.units) {
        UnitCourse course;
        course.seed = options.seed;
        course.scenario = scenario;
        course.scenarioDelayMs = scenarioDelayMs(options.scenario, identity.address);
        if (units.empty()) {
            course.fault = [&faults](const std::string& text) {
                return readFault(text, [&faults](const faults::Plan& plan) { faults.set(plan); });
            };
        }
        const std::int64_t startMs = localCivilMs();
        course.past = pastOf(identity, options.seed, startMs);
        units.push_back(std::make_unique<SimulatedUnit>(identity, startMs, trace, std::move(course)));
    }
    return units;
}

RequestHandler handlerFor(Framing framing, const Units& units, faults::Injector& faults)
{
    const auto router = std::make_shared<RequestRouter>(framing, units, faults);
    return [router](const Bytes& request) { return router->answer(request); };
}

/// Steps the units in their own time until a signal asks to stop. Steps are counted from the start, so that
/// no delay adds up. A machine that cannot keep up still hears the signal.
void runUntilSignal(const Units& units, double timeScale, int signalFd)
{
    using namespace std::chrono;
    constexpr milliseconds period(100);
    constexpr int stepMs = 100;
    auto next = steady_clock::now() + period;
    double dueMs = 0; // of virtual time
    for (;;) {
        const auto left = ceil<milliseconds>(next - steady_clock::now());
        pollfd source{signalFd, POLLIN, 0};
        if (::poll(&source, 1, std::max(0, static_cast<int>(left.count()))) > 0)
            return;
        if (steady_clock::now() < next)
            continue;
        next += period;
        dueMs += static_cast<double>(period.count()) * timeScale;
        while (dueMs >= stepMs) {
            dueMs -= stepMs;
            for (const auto& unit : units)
                unit->advance(stepMs);
        }
    }
}

int serve(const Options& options, const Scenario& scenario, int signalFd)
{
    QString error;
    std::unique_ptr<Trace> trace;
    if (!options.tracePath.isEmpty()) {
        trace = Trace::open(options.tracePath, &error);
        if (!trace)
            return fail(NoResource,
                        QStringLiteral("cannot write the trace %1: %2: choose another --trace path")
                            .arg(options.tracePath, error));
    }
    std::unique_ptr<TcpServer> tcp;
    std::unique_ptr<SerialLine> serial;
    faults::Injector faults(trace.get(), [&](const Outage& outage) {
        if (tcp)
            tcp->outages().set(outage);
        if (serial)
            serial->outages().set(outage);
    });
    const Units units = makeUnits(options, scenario, faults, trace.get());
    if (options.tcpPort) {
        tcp = TcpServer::listen(options.bindAddress, *options.tcpPort,
                                handlerFor(Framing::Tcp, units, faults), &error);
        if (!tcp)
            return fail(NoResource, error);
    }
    if (!options.serialLink.isEmpty()) {
        std::unique_ptr<PseudoTerminal> terminal = PseudoTerminal::open(options.serialLink, &error);
        if (!terminal)
            return fail(NoResource, error);
        serial = std::make_unique<SerialLine>(std::move(terminal), options.baud,
                                              handlerFor(Framing::Rtu, units, faults));
    }
    for (const faults::Plan& plan : options.faults)
        faults.set(plan);

    const FileDescriptor stop(::eventfd(0, EFD_CLOEXEC));
    std::vector<std::thread> threads;
    if (tcp) {
        threads.emplace_back([&] { tcp->run(stop.get()); });
        announce(QStringLiteral("listening on %1:%2").arg(options.bindAddress, QString::number(tcp->port())));
    }
    if (serial) {
        threads.emplace_back([&] { serial->run(stop.get()); });
        announce(QStringLiteral("serial line %1 ready").arg(options.serialLink));
    }
    runUntilSignal(units, options.timeScale, signalFd);
    ::eventfd_write(stop.get(), 1);
    for (std::thread& thread : threads)
        thread.join();
    return Stopped;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QString error;
    const std::optional<Options> options = parseOptions(QCoreApplication::arguments(), &error);
    if (!options)
        return fail(WrongUsage, QStringLiteral("%1 (ups-sim --help lists the options)").arg(error));
    if (options->help) {
        announce(helpText().trimmed());
        return Stopped;
    }
    Scenario scenario;
    const ExitStatus scenarioStatus = readScenario(options->scenario, scenario, &error);
    if (scenarioStatus != Stopped)
        return fail(scenarioStatus, error);

    // Blocked in every thread to come; the main thread reads them from a descriptor.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&stopSignals, signal);
    ::pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    // A client may go away at any moment.
    std::signal(SIGPIPE, SIG_IGN);
    const FileDescriptor signalFd(::signalfd(-1, &stopSignals, SFD_CLOEXEC));
    try {
        return serve(*options, scenario, signalFd.get());
    } catch (const std::exception& failure) {
        return fail(NoResource, QString::fromLocal8Bit(failure.what()));
    }
}
