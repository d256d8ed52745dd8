#include "endpoint.h"
#include "options.h"
#include "serialline.h"
#include "simulatedunit.h"
#include "tcpserver.h"
#include "trace.h"

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

Units makeUnits(const Options& options, Trace* trace)
{
    Units units;
    for (const UnitIdentity& identity : options.units)
        units.push_back(std::make_unique<SimulatedUnit>(identity, localCivilMs(), trace));
    return units;
}

/// All units at the end of one transport: each gets every request, the one that is meant answers.
RequestHandler handlerFor(Framing framing, const Units& units)
{
    std::vector<std::shared_ptr<Endpoint>> endpoints;
    for (const auto& unit : units)
        endpoints.push_back(std::make_shared<Endpoint>(framing, *unit));
    return [endpoints](const Bytes& request) {
        Bytes reply;
        for (const auto& endpoint : endpoints) {
            const Bytes answer = endpoint->answer(request);
            reply.insert(reply.end(), answer.begin(), answer.end());
        }
        return reply;
    };
}

/// Steps the units in real time until a signal asks to stop. Steps are counted from the start, so that no
/// delay adds up.
void runUntilSignal(const Units& units, int signalFd)
{
    using namespace std::chrono;
    constexpr milliseconds period(100);
    auto next = steady_clock::now() + period;
    for (;;) {
        const auto left = ceil<milliseconds>(next - steady_clock::now());
        pollfd source{signalFd, POLLIN, 0};
        if (::poll(&source, 1, std::max(0, static_cast<int>(left.count()))) > 0)
            return;
        for (; steady_clock::now() >= next; next += period) {
            for (const auto& unit : units)
                unit->advance(static_cast<int>(period.count()));
        }
    }
}

int serve(const Options& options, int signalFd)
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
    const Units units = makeUnits(options, trace.get());
    std::unique_ptr<TcpServer> tcp;
    if (options.tcpPort) {
        tcp =
            TcpServer::listen(options.bindAddress, *options.tcpPort, handlerFor(Framing::Tcp, units), &error);
        if (!tcp)
            return fail(NoResource, error);
    }
    std::unique_ptr<SerialLine> serial;
    if (!options.serialLink.isEmpty()) {
        std::unique_ptr<PseudoTerminal> terminal = PseudoTerminal::open(options.serialLink, &error);
        if (!terminal)
            return fail(NoResource, error);
        serial =
            std::make_unique<SerialLine>(std::move(terminal), options.baud, handlerFor(Framing::Rtu, units));
    }

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
    runUntilSignal(units, signalFd);
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
        return serve(*options, signalFd.get());
    } catch (const std::exception& failure) {
        return fail(NoResource, QString::fromLocal8Bit(failure.what()));
    }
}
