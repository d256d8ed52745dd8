#pragma once

#include "faultplan.h"
#include "outageswitch.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace simulation {
class Trace;
}

namespace simulation::faults {

/// What faults select requests by.
struct RequestKey
{
    int address = 0;
    int function = 0;
    int firstRegister = 0;
};

/// A fault that is due, and how often it has been due before; what is random about it follows from that.
struct Fault
{
    Plan plan;
    int occurrence = 0;
};

/// Holds the faults that were asked for and says which one meets a request. Any thread may call.
class Injector
{
public:
    using Time = std::chrono::steady_clock::time_point;
    /// Called for every outage that begins, and with LineState::Up when all faults end; in the thread that
    /// caused it, without a lock held.
    using OutageHandler = std::function<void(const Outage& outage)>;

    /// Faults that are applied go into `trace`, which may be null and must outlive the injector.
    explicit Injector(Trace* trace, OutageHandler onOutage = nullptr);

    /// Adds a fault to those that hold already, or ends them all if the plan is Kind::None.
    void set(const Plan& plan, Time now = std::chrono::steady_clock::now());
    /// Ends all faults and any outage.
    void clear();

    /// The fault that meets this request, which is hereby counted; nothing when the request is to be answered
    /// properly. Of several that are due the one set last is chosen, so that a fault for one request can be
    /// put on top of a lasting one. An outage begins before this returns.
    std::optional<Fault> next(const RequestKey& request, Time now = std::chrono::steady_clock::now());

private:
    struct Armed
    {
        Plan plan;
        std::optional<Time> end;
        int seen = 0;    ///< requests that it selects
        int applied = 0; ///< of those
    };

    static bool selects(const Plan& plan, const RequestKey& request);
    static bool isDue(const Armed& armed);
    static bool isOver(const Armed& armed, Time now);
    std::optional<Fault> choose(const RequestKey& request, Time now);
    void begin(const Plan& outage);

    Trace* const m_trace;
    const OutageHandler m_onOutage;
    std::mutex m_mutex;
    std::vector<Armed> m_armed; ///< in the order in which they were set
};

} // namespace simulation::faults
