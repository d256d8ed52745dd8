#include "injector.h"

#include "trace.h"

#include <algorithm>
#include <utility>

namespace simulation::faults {

namespace {

/// Modbus's own address for all units: the outage was not for the sake of one.
constexpr int everyUnit = 0;

/// How often a fault is applied before it is used up; nothing: no limit.
std::optional<int> limitOf(const Plan& plan)
{
    return plan.request && !plan.times ? 1 : plan.times;
}

} // namespace

Injector::Injector(Trace* trace, OutageHandler onOutage)
    : m_trace(trace)
    , m_onOutage(std::move(onOutage))
{}

void Injector::set(const Plan& plan, Time now)
{
    if (plan.kind == Kind::None) {
        clear();
        return;
    }
    if (plan.beginsAtOnce()) {
        if (m_trace)
            m_trace->fault(everyUnit, plan.text);
        begin(plan);
        return;
    }
    Armed armed;
    armed.plan = plan;
    if (plan.lifetime)
        armed.end = now + *plan.lifetime;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_armed.push_back(std::move(armed));
}

void Injector::clear()
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_armed.clear();
    }
    if (m_onOutage)
        m_onOutage({});
}

std::optional<Fault> Injector::next(const RequestKey& request, Time now)
{
    std::optional<Fault> fault = choose(request, now);
    if (!fault)
        return fault;
    if (m_trace)
        m_trace->fault(request.address, fault->plan.text, request.function, request.firstRegister);
    if (fault->plan.isOutage())
        begin(fault->plan);
    return fault;
}

std::optional<Fault> Injector::choose(const RequestKey& request, Time now)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto over = [now](const Armed& armed) { return isOver(armed, now); };
    m_armed.erase(std::remove_if(m_armed.begin(), m_armed.end(), over), m_armed.end());
    Armed* chosen = nullptr;
    for (Armed& armed : m_armed) {
        if (!selects(armed.plan, request))
            continue;
        ++armed.seen;
        if (isDue(armed))
            chosen = &armed;
    }
    if (!chosen)
        return std::nullopt;
    return Fault{chosen->plan, chosen->applied++};
}

bool Injector::selects(const Plan& plan, const RequestKey& request)
{
    return plan.address.value_or(request.address) == request.address &&
           plan.function.value_or(request.function) == request.function &&
           plan.block.value_or(request.firstRegister) == request.firstRegister;
}

bool Injector::isDue(const Armed& armed)
{
    return armed.seen >= armed.plan.request.value_or(1);
}

bool Injector::isOver(const Armed& armed, Time now)
{
    const std::optional<int> limit = limitOf(armed.plan);
    return (armed.end && now >= *armed.end) || (limit && armed.applied >= *limit);
}

void Injector::begin(const Plan& outage)
{
    const LineState state = outage.kind == Kind::Refused ? LineState::Refused : LineState::BlackHole;
    const bool isWithoutLength = outage.amount == 0 && outage.beginsAtOnce();
    const auto duration = isWithoutLength ? outage.lifetime.value_or(std::chrono::milliseconds(0))
                                          : std::chrono::milliseconds(outage.amount);
    if (m_onOutage)
        m_onOutage({state, duration});
}

} // namespace simulation::faults
