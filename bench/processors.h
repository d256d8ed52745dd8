#pragma once

#include <sched.h>

/// Who runs on a processor of its own.
enum class Role
{
    Client,
    Unit
};

/// The client has the first of the processors that the program was given, the units have the last.
inline int processorOf(Role role)
{
    static const cpu_set_t given = [] {
        cpu_set_t set;
        ::sched_getaffinity(0, sizeof set, &set);
        return set;
    }();
    int chosen = -1;
    for (int i = 0; i < CPU_SETSIZE; ++i) {
        if (CPU_ISSET(i, &given) && (chosen == -1 || role == Role::Unit))
            chosen = i;
    }
    return chosen;
}

/// Keeps the calling thread, and the processes that it starts, on the processor of a role while it lives.
class OnProcessor
{
public:
    explicit OnProcessor(Role role)
    {
        const int processor = processorOf(role); // before anything is narrowed
        ::sched_getaffinity(0, sizeof m_before, &m_before);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(processor, &one);
        ::sched_setaffinity(0, sizeof one, &one);
    }
    ~OnProcessor() { ::sched_setaffinity(0, sizeof m_before, &m_before); }
    OnProcessor(const OnProcessor&) = delete;
    OnProcessor& operator=(const OnProcessor&) = delete;

private:
    cpu_set_t m_before;
};
