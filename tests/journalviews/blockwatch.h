#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <ctime>

// Taking the stack of every allocation, as these builds do, is slow.
#ifdef __SANITIZE_ADDRESS__
constexpr int fewerBy = 50;
constexpr double longestBlockMs = 500;
#else
constexpr int fewerBy = 1;
constexpr double longestBlockMs = 50;
#endif

/// Measures for how long this thread's event loop is not entered. The thread's own processor time counts as
/// well as the clock: on a busy machine the clock tells more of the other programs.
class BlockWatch
{
public:
    BlockWatch()
    {
        m_clock.start();
        m_cpuMs = cpuMs();
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { tick(); });
        m_timer.start(1);
    }

    double longestMs() const { return m_longestMs; }
    double longestCpuMs() const { return m_longestCpuMs; }

private:
    static double cpuMs()
    {
        timespec time = {};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }
    void tick()
    {
        const double now = cpuMs();
        m_longestCpuMs = qMax(m_longestCpuMs, now - m_cpuMs);
        m_longestMs = qMax(m_longestMs, static_cast<double>(m_clock.nsecsElapsed()) / 1e6);
        m_cpuMs = now;
        m_clock.start();
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_cpuMs = 0;
    double m_longestMs = 0;
    double m_longestCpuMs = 0;
};
