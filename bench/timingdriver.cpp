// Stands where the driver is looked for, and hands every call on to it. So the moments at which cycles begin
// can be told of a host that runs as it always does.

#include "porthandle.h"
#include "querytimes.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>

namespace {

using QueryEntry = int (*)(PortHandle*, int, void (*)(int, float, void*), void*);
using ControlEntry = int (*)(PortHandle*, int, const char*, void*);

[[noreturn]] void stop(const char* what)
{
    std::perror(what);
    std::abort();
}

void* entry(const char* name)
{
    static void* const library = ::dlopen(drivenLibrary, RTLD_NOW);
    void* const found = library ? ::dlsym(library, name) : nullptr;
    if (!found)
        stop(drivenLibrary);
    return found;
}

QueryTimes& times()
{
    static QueryTimes* const mapped = [] {
        const int file = ::open(queryTimesFile, O_RDWR | O_CLOEXEC);
        void* const memory = ::mmap(nullptr, sizeof(QueryTimes), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (memory == MAP_FAILED)
            stop(queryTimesFile);
        return static_cast<QueryTimes*>(memory);
    }();
    return *mapped;
}

QueryTimes::Unit& ownUnit()
{
    thread_local QueryTimes::Unit& unit = times().units[times().unitCount++ % QueryTimes::maxUnits];
    return unit;
}

std::int64_t nowNs()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void noteBegin(QueryTimes::Unit& unit)
{
    thread_local std::int64_t lastBegin = 0;
    const std::int64_t begin = nowNs();
    const std::int64_t delay = lastBegin == 0 ? 0 : begin - lastBegin - QueryTimes::periodNs;
    lastBegin = begin;
    if (delay > QueryTimes::lateNs)
        ++unit.late;
    if (delay > unit.worstDelayNs)
        unit.worstDelayNs = delay;
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) int Query(PortHandle* port, int address,
                                                 void (*callback)(int, float, void*), void* context)
{
    static const auto query = reinterpret_cast<QueryEntry>(entry("Query"));
    QueryTimes::Unit& unit = ownUnit();
    noteBegin(unit);
    const int result = query(port, address, callback, context);
    if (result == 0)
        ++unit.failures;
    ++unit.queries;
    return result;
}

__attribute__((visibility("default"))) int Control(PortHandle* port, int address, const char* command,
                                                   void* context)
{
    static const auto control = reinterpret_cast<ControlEntry>(entry("Control"));
    return control(port, address, command, context);
}
}
