#pragma once

#include <QObject>

class QSocketNotifier;

/// Turns SIGINT, SIGTERM and SIGHUP into a signal of the event loop. The second one ends the process at once,
/// for whoever does not want to wait for a unit that is slow to answer. One object at a time; main thread.
class StopSignals : public QObject
{
    Q_OBJECT

public:
    /// Installs the handlers and ignores SIGPIPE: a closed output is seen where it is written.
    explicit StopSignals(QObject* parent = nullptr);
    /// Gives the signals back to the system's defaults.
    ~StopSignals() override;

    /// Whether a signal has come, also while the event loop does not run. Any thread.
    static bool isPending();

signals:
    void stopRequested();

private:
    QSocketNotifier* m_notifier = nullptr;
};
