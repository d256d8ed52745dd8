#pragma once

#include <QMutex>

#include <atomic>

/// Lets one cycle at a time through, whichever thread asks for it.
///
/// A thread that is inside already is refused rather than blocked: a slot that a cycle's event calls may
/// ask for a cycle itself.
class CycleGate
{
public:
    /// Waits for another thread's cycle, then enters; false when this thread is inside already.
    bool enter();
    /// Leaves; only after a successful enter().
    void leave();
    /// Whether the calling thread is inside.
    bool isInside() const;

private:
    QMutex m_mutex;
    std::atomic<void*> m_owner{nullptr};
};

/// Enters a gate for the length of a scope.
class CycleGateLocker
{
public:
    explicit CycleGateLocker(CycleGate& gate)
        : m_gate(gate)
        , m_isEntered(gate.enter())
    {}
    ~CycleGateLocker()
    {
        if (m_isEntered)
            m_gate.leave();
    }
    /// False when the thread was inside already.
    bool isEntered() const { return m_isEntered; }

private:
    Q_DISABLE_COPY(CycleGateLocker)

    CycleGate& m_gate;
    const bool m_isEntered;
};
