#pragma once

#include <QThread>
#include <QVector>

class UnitSession;

/// Has units read their settings, one after the other: that opens their ports, and a device may take its time
/// over it. Ends early when interrupted.
class ConfigThread : public QThread
{
public:
    /// The sessions must outlive the running thread, and none may be started before it has finished.
    explicit ConfigThread(const QVector<UnitSession*>& units)
        : m_units(units)
    {}

protected:
    void run() override;

private:
    const QVector<UnitSession*> m_units;
};
