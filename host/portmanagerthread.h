#pragma once

#include <QSemaphore>
#include <QThread>

class PortManage;

/// The thread that the port manager lives in. Its tick, every 30 seconds, waits for a query that runs on a
/// port: on the main thread it would hold up everything else for as long.
///
/// Made and deleted on the main thread; every collector that uses the manager must be gone before.
class PortManagerThread : public QThread
{
public:
    /// Starts the thread; the manager is there when the constructor returns.
    PortManagerThread();
    /// Deletes the manager in its thread, which closes every port, and waits for that.
    ~PortManagerThread() override;

    /// The manager, as create() of a collector takes it. Owned by the thread.
    PortManage* manager() const { return m_manager; }

protected:
    void run() override;

private:
    QSemaphore m_ready;
    PortManage* m_manager = nullptr; // written before m_ready is released
};
