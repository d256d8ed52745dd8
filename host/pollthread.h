#pragma once

#include <QSemaphore>
#include <QThread>

class CollectThread;

/// Asks one collector for its cycles: what a host does that does not start the collector's own thread.
class PollThread : public QThread
{
public:
    /// The collector must outlive the running thread.
    explicit PollThread(CollectThread* collector);

    /// Ends the thread after the cycle that runs; returns at once. Main thread.
    void requestStop();

protected:
    void run() override;

private:
    CollectThread* m_collector;
    QSemaphore m_stop; // has a token once a stop was asked for: ends the pause early
};
