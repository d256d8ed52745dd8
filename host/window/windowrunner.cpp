#include "windowrunner.h"

#include "collectthread.h"
#include "diagnostics.h"
#include "eventlist.h"
#include "trends.h"

#include <QApplication>
#include <QSettings>

namespace {

constexpr int msPerSecond = 1000;
constexpr int stopLookMs = 20;
constexpr int quietStopMs = 5000; // after that, say whom the end waits for

const auto eventUnitKey = QStringLiteral("events/unit");
const auto eventKindsKey = QStringLiteral("events/kinds");
const auto trendSpanKey = QStringLiteral("trends/spanMs");

using Sessions = std::vector<std::unique_ptr<UnitSession>>;

Sessions makeSessions(const HostOptions& options, const QStringList& unitNames,
                      std::vector<std::unique_ptr<CollectThread>> collectors)
{
    const auto cycles = options.isPolling ? UnitSession::Cycles::Polled : UnitSession::Cycles::OwnThread;
    Sessions sessions;
    for (size_t i = 0; i < collectors.size(); ++i)
        sessions.push_back(
            std::make_unique<UnitSession>(unitNames[static_cast<int>(i)], std::move(collectors[i]), cycles));
    return sessions;
}

QVector<UnitSession*> pointersOf(const Sessions& sessions)
{
    QVector<UnitSession*> units;
    for (const auto& session : sessions)
        units += session.get();
    return units;
}

} // namespace

WindowRunner::WindowRunner(const HostOptions& options, const QStringList& unitNames,
                           std::vector<std::unique_ptr<CollectThread>> collectors,
                           const WindowSettings& settings)
    : m_options(options)
    , m_memoryFile(settings.memoryFile)
    , m_sessions(makeSessions(options, unitNames, std::move(collectors)))
    , m_config(std::make_unique<ConfigThread>(pointersOf(m_sessions)))
    , m_window(std::make_unique<MainWindow>(pointersOf(m_sessions), settings.language))
    , m_events(new EventList(options.journalFile))
    , m_trends(new Trends(options.journalFile))
    , m_editor(settings.units, *m_window)
{
    m_window->addUnitAction(m_editor.action());
    m_editor.setShownUnit([this] { return m_window->shownUnit(); });
    addJournalViews();
    connect(m_config.get(), &QThread::finished, this, &WindowRunner::startUnits);
    connect(m_window.get(), &MainWindow::closeRequested, this, &WindowRunner::stop);
    // Queued: the dialog closes itself first.
    connect(&m_editor, &UnitsEditor::unitsChanged, this, &WindowRunner::endForNewUnits, Qt::QueuedConnection);
    connect(&m_stopTimer, &QTimer::timeout, this, &WindowRunner::endWhenStopped);
}

WindowRunner::~WindowRunner()
{
    m_config->requestInterruption();
    m_config->wait();
    for (const auto& session : m_sessions)
        session->requestStop(); // all before the first is waited for, which its own end does
}

// Trends follow the unit whose pages are shown; an event leads to its unit and to what was around its time.
void WindowRunner::addJournalViews()
{
    m_window->setEventList(m_events);
    m_window->setTrends(m_trends);
    connect(m_window.get(), &MainWindow::unitShown, m_trends, [this](const QString& unit) {
        m_trends->setUnit(unit);
        tellWhetherAnswering();
    });
    for (const auto& session : m_sessions)
        connect(session.get(), &UnitSession::eventReceived, this, &WindowRunner::tellWhetherAnswering);
    connect(m_events, &EventList::eventActivated, this, [this](const QString& unit, qint64 utcMs) {
        m_window->selectUnit(unit);
        m_trends->setUnit(unit); // one that is configured no more has a past all the same
        tellWhetherAnswering();
        m_trends->showTime(utcMs);
        m_window->openTrends();
    });
}

void WindowRunner::tellWhetherAnswering()
{
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(), [this](const auto& session) {
        return session->name() == m_trends->unit();
    });
    m_trends->setUnitAnswering(found != m_sessions.end() && !(*found)->state().liveData().isEmpty());
}

WindowRunner::End WindowRunner::run()
{
    QApplication::setQuitOnLastWindowClosed(false); // the units have to end first
    restoreChoices();
    m_window->show();
    m_config->start();
    if (m_options.seconds > 0)
        QTimer::singleShot(m_options.seconds * msPerSecond, Qt::PreciseTimer, this, &WindowRunner::stop);
    m_loop.exec();
    return *m_end;
}

QVector<UnitSession*> WindowRunner::units() const
{
    return pointersOf(m_sessions);
}

void WindowRunner::restoreChoices()
{
    const QSettings memory(m_memoryFile, QSettings::IniFormat);
    m_window->restore(memory);
    m_events->setUnit(memory.value(eventUnitKey).toString());
    m_events->setKinds(EventKinds::Set(memory.value(eventKindsKey, EventKinds::all).toInt()));
    m_trends->setSpan(memory.value(trendSpanKey, m_trends->spanMs()).toLongLong());
}

void WindowRunner::keepChoices(QSettings& memory) const
{
    m_window->remember(memory);
    memory.setValue(eventUnitKey, m_events->unit());
    memory.setValue(eventKindsKey, int(m_events->kinds()));
    memory.setValue(trendSpanKey, m_trends->spanMs());
}

void WindowRunner::stop()
{
    if (!m_loop.isRunning() || m_end == End::Stopped)
        return;
    QSettings memory(m_memoryFile, QSettings::IniFormat); // written when nothing is shown any more
    if (!m_end)
        keepChoices(memory);
    // Everything that is open, boxes that wait for an answer too: hidden, they take it as a no and return.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
        window->hide();
    beginEnd(End::Stopped);
}

// The window stays and says so until the units have ended; the next one comes up in its place.
void WindowRunner::endForNewUnits()
{
    if (!m_loop.isRunning() || m_end)
        return;
    QSettings memory(m_memoryFile, QSettings::IniFormat);
    keepChoices(memory);
    m_window->setWaiting(tr("Starting the units anew..."));
    beginEnd(End::UnitsChanged);
}

void WindowRunner::beginEnd(End end)
{
    m_end = end;
    m_editor.close();
    m_config->requestInterruption();
    for (const auto& session : m_sessions)
        session->requestStop();
    QTimer::singleShot(quietStopMs, this, &WindowRunner::sayWhomItWaitsFor);
    m_stopTimer.start(stopLookMs);
}

// Once every unit has its settings: none polls while another's port is opened, which would have to wait.
void WindowRunner::startUnits()
{
    if (m_end)
        return;
    for (const auto& session : m_sessions)
        session->start();
}

void WindowRunner::endWhenStopped()
{
    if (hasStopped())
        m_loop.quit();
}

bool WindowRunner::hasStopped()
{
    return !m_editor.isBusy() && !m_events->isExporting() && m_config->isFinished() &&
           std::all_of(m_sessions.begin(), m_sessions.end(),
                       [](const auto& session) { return session->waitStopped(0); });
}

void WindowRunner::sayWhomItWaitsFor()
{
    if (!m_config->isFinished())
        diagnostics::print(QStringLiteral("waiting for a port to open"));
    if (m_editor.isBusy())
        diagnostics::print(QStringLiteral("waiting for the test of a unit to end"));
    if (m_events->isExporting())
        diagnostics::print(QStringLiteral("waiting for an export to end"));
    for (const auto& session : m_sessions) {
        if (!session->waitStopped(0))
            diagnostics::print(QStringLiteral("waiting for %1 to end its query").arg(session->name()));
    }
}
