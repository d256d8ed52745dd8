#pragma once

#include "configthread.h"
#include "hostoptions.h"
#include "mainwindow.h"
#include "unitseditor.h"
#include "unitsession.h"

#include <QEventLoop>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class CollectThread;
class EventList;
class QSettings;
class Trends;

/// What a window needs to know besides its units.
struct WindowSettings
{
    QString memoryFile;       ///< keeps geometry and choices; may be missing
    int language = 0;         ///< the host's number of its language
    UnitsEditor::Place units; ///< where the units dialog finds what it edits
};

/// Runs units with a window. Nothing here waits for a unit: they are configured on a thread, and stopped
/// while the event loop runs. GUI thread.
class WindowRunner : public QObject
{
    Q_OBJECT

public:
    /// Takes over collectors, one for each name.
    WindowRunner(const HostOptions& options, const QStringList& unitNames,
                 std::vector<std::unique_ptr<CollectThread>> collectors, const WindowSettings& settings);
    /// Ends everything, whether run() has returned or never began.
    ~WindowRunner() override;

    enum class End
    {
        Stopped,     ///< the window was closed, the time is over or stop() was called
        UnitsChanged ///< the configuration is another one: read it, and run its units
    };

    /// The units, in the order of the window's list.
    QVector<UnitSession*> units() const;
    MainWindow& window() { return *m_window; }
    UnitsEditor& editor() { return m_editor; }
    EventList& events() { return *m_events; }
    Trends& trends() { return *m_trends; }

    /// Shows the window and starts the units. Returns when every unit has stopped.
    End run();
    /// Hides the window at once and ends run(); ignored before it.
    void stop();

private:
    void addJournalViews();
    void tellWhetherAnswering();
    void restoreChoices();
    void keepChoices(QSettings& memory) const;
    void beginEnd(End end);
    void endForNewUnits();
    void startUnits();
    void endWhenStopped();
    bool hasStopped();
    void sayWhomItWaitsFor();

    const HostOptions m_options;
    const QString m_memoryFile;
    std::vector<std::unique_ptr<UnitSession>> m_sessions;
    std::unique_ptr<ConfigThread> m_config;
    std::unique_ptr<MainWindow> m_window; // ends before the sessions, whose pages it shows
    EventList* m_events;                  // the window's
    Trends* m_trends;                     // the window's
    UnitsEditor m_editor;
    QEventLoop m_loop;
    QTimer m_stopTimer;
    std::optional<End> m_end; // set once the units have been asked to stop
};
