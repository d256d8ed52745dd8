#include "headlessrunner.h"

#include "collectthread.h"
#include "diagnostics.h"
#include "eventtype.h"
#include "lineoutput.h"
#include "recordjson.h"
#include "recordtext.h"

#include <QTime>
#include <QTimer>

#include <climits>

namespace {
constexpr int statusIntervalMs = 1000;
constexpr int msPerSecond = 1000;
constexpr unsigned long quietStopMs = 5000; // after that, say whom the end waits for
} // namespace

HeadlessRunner::HeadlessRunner(const HostOptions& options, const QStringList& unitNames,
                               std::vector<std::unique_ptr<CollectThread>> collectors,
                               const QStringList& eventTexts, LineOutput& output)
    : m_options(options)
    , m_output(output)
    , m_eventTexts(eventTexts)
    , m_controlsToSend(options.controls)
{
    const auto cycles = options.isPolling ? UnitSession::Cycles::Polled : UnitSession::Cycles::OwnThread;
    for (size_t i = 0; i < collectors.size(); ++i) {
        const QString& name = unitNames[static_cast<int>(i)];
        m_nameWidth = qMax(m_nameWidth, name.size());
        auto session = std::make_unique<UnitSession>(name, std::move(collectors[i]), cycles);
        connect(session.get(), &UnitSession::eventReceived, this,
                [this, unit = session.get()](int type, const QVariantMap& record) {
                    takeEvent(*unit, type, record);
                });
        session->loadConfig();
        m_sessions.push_back(std::move(session));
    }
}

HeadlessRunner::~HeadlessRunner()
{
    stopUnits();
}

ExitCode HeadlessRunner::run()
{
    // Started only now that every unit has its settings: none polls while another's port is reopened.
    for (const auto& session : m_sessions)
        session->start();

    QTimer statusTimer;
    connect(&statusTimer, &QTimer::timeout, this, &HeadlessRunner::printStatus);
    statusTimer.start(statusIntervalMs);
    if (m_options.seconds > 0)
        QTimer::singleShot(m_options.seconds * msPerSecond, Qt::PreciseTimer, this, &HeadlessRunner::stop);
    m_loop.exec();

    stopUnits();
    return result();
}

void HeadlessRunner::stop()
{
    m_loop.quit();
}

void HeadlessRunner::takeEvent(UnitSession& session, int type, const QVariantMap& record)
{
    if (m_options.isJson) {
        const bool isAnswering = session.state().contact() == UnitState::Contact::Answering;
        m_output.write(recordjson::eventLine(session.name(), type, record, isAnswering));
    } else {
        const QString text = recordtext::describe(type, record, m_eventTexts);
        if (!text.isEmpty())
            printLine(session.name(), text);
    }
    if (type == EventType::Communicating && m_loop.isRunning()) // a stopped unit would not take them
        sendControls(session);
    if (!m_output.isOpen())
        stop();
}

void HeadlessRunner::sendControls(UnitSession& session)
{
    QList<ControlRequest> others;
    for (const ControlRequest& request : qAsConst(m_controlsToSend)) {
        if (request.unitName != session.name()) {
            others += request;
            continue;
        }
        session.collector().control(request.id, request.value); // queues it and returns
        if (!m_options.isJson)
            printLine(session.name(), QStringLiteral("command %1 handed over").arg(request.id));
    }
    m_controlsToSend = others;
}

void HeadlessRunner::printStatus()
{
    if (m_options.isJson)
        return;
    for (const auto& session : m_sessions) {
        const UnitState& state = session->state();
        const QStringList row = session->collector().changeLogData(state.liveData());
        printLine(session->name(), recordtext::status(state, row));
    }
    if (!m_output.isOpen())
        stop();
}

// The time is that of printing: a record carries the time at which its cycle began, and lines that go back
// in time are hard to read.
void HeadlessRunner::printLine(const QString& unitName, const QString& text)
{
    const QString time = QTime::currentTime().toString(QStringLiteral("hh:mm:ss"));
    const QString line =
        time + QLatin1Char(' ') + unitName.leftJustified(m_nameWidth) + QStringLiteral("  ") + text;
    m_output.write(line.toUtf8());
}

void HeadlessRunner::stopUnits()
{
    // All are asked before the first is waited for: the end takes as long as the slowest, not as the sum.
    for (const auto& session : m_sessions)
        session->requestStop();
    for (const auto& session : m_sessions) {
        if (session->waitStopped(quietStopMs))
            continue;
        diagnostics::print(QStringLiteral("waiting for %1 to end its query").arg(session->name()));
        session->waitStopped(ULONG_MAX);
    }
}

ExitCode HeadlessRunner::result() const
{
    ExitCode code = ExitCode::Ok;
    for (const auto& session : m_sessions) {
        if (session->state().contact() == UnitState::Contact::NotHeard) {
            diagnostics::print(
                QStringLiteral("%1 never answered; \"ups-host --check %1\" tells why").arg(session->name()));
            code = ExitCode::UnitNotHeard;
        }
    }
    for (const ControlRequest& request : m_controlsToSend)
        diagnostics::print(QStringLiteral("command %1 was not sent to %2")
                               .arg(QString::number(request.id), request.unitName));
    if (!m_output.isOpen() && !m_output.isClosedByReader()) {
        diagnostics::print(QStringLiteral("standard output: %1").arg(m_output.errorText()));
        code = ExitCode::OutputFailed;
    }
    return code;
}
