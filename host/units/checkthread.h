#pragma once

#include "checksettings.h"

#include <QSocketNotifier>
#include <QThread>

#include <memory>

class PortManage;

/// A serial port of the units that run.
struct RunningPort
{
    PortManage* manager = nullptr; ///< theirs; null when none of them is on the port
    QString name;                  ///< that they have it under
};

/// One look at one unit, as --check takes it, on a thread of its own. Made and deleted on the GUI thread;
/// SIGPIPE must be ignored and the plugin loaded, as for every check.
class CheckThread : public QThread
{
    Q_OBJECT

public:
    /// A port of units that run is held during the check, so that they wait instead of spoiling its answers.
    CheckThread(const QString& unitName, const CheckSettings& settings, const RunningPort& runningPort);
    /// Waits for the check to end, see cancel(): delete it after ended().
    ~CheckThread() override;

    /// No more lines from now on; the thread ends after the connection attempt or read that runs.
    void cancel();

signals:
    /// One line of the check, as soon as it is known; GUI thread.
    void lineReady(const QString& line);
    /// The thread has ended and every line has been told, unless it was cancelled; GUI thread.
    void ended(bool hasAnswered);

protected:
    void run() override;

private:
    bool runOnPort();
    bool runCheck();
    void readLines();
    void finish();

    const QString m_unitName;
    const CheckSettings m_settings;
    const RunningPort m_runningPort;
    int m_readEnd = -1;  // of the pipe that the check writes its lines to
    int m_writeEnd = -1; // the thread's while it runs
    std::unique_ptr<QSocketNotifier> m_notifier;
    QByteArray m_unread;
    bool m_isCancelled = false; // of the GUI thread, like all above
    bool m_hasAnswered = false; // written before the thread ends
};
