#pragma once

#include "exitcode.h"
#include "hostoptions.h"
#include "unitsession.h"

#include <QEventLoop>
#include <QObject>

#include <memory>
#include <vector>

class CollectThread;
class LineOutput;

/// Runs units without a window and prints what they tell: a line per event and, every second, a line of
/// key values per unit; or every event as JSON. Main thread; calls nothing of the GUI library.
class HeadlessRunner : public QObject
{
    Q_OBJECT

public:
    /// Configures collectors, one for each name. The output must outlive the runner; eventTexts are the
    /// plugin's, by event code.
    HeadlessRunner(const HostOptions& options, const QStringList& unitNames,
                   std::vector<std::unique_ptr<CollectThread>> collectors, const QStringList& eventTexts,
                   LineOutput& output);
    /// Stops and deletes the collectors.
    ~HeadlessRunner() override;

    /// Starts the units, returns when the time is over, stop() was called or the output closed, and every
    /// unit has stopped.
    ExitCode run();
    /// Ends run(); ignored before it.
    void stop();

private:
    void takeEvent(UnitSession& session, int type, const QVariantMap& record);
    void sendControls(UnitSession& session);
    void printStatus();
    void printLine(const QString& unitName, const QString& text);
    void stopUnits();
    ExitCode result() const;

    const HostOptions m_options;
    LineOutput& m_output;
    const QStringList m_eventTexts;
    int m_nameWidth = 0;
    QList<ControlRequest> m_controlsToSend;
    std::vector<std::unique_ptr<UnitSession>> m_sessions;
    QEventLoop m_loop;
};
