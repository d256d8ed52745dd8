#include "unitpast.h"

#include "pastincidents.h"
#include "scenarioparser.h"
#include "simulatedunit.h"

#include <random>
#include <utility>

namespace simulation {

namespace {

constexpr std::int64_t secondMs = 1000;
constexpr std::int64_t hourMs = 3600 * secondMs;
constexpr std::int64_t dayMs = 24 * hourMs;

} // namespace

// The unit itself lives through the incidents, so that its past knows the same alarms as its present.
EventHistory pastOf(const UnitIdentity& identity, std::uint32_t seed, std::int64_t startMs)
{
    std::mt19937 random(seed + static_cast<std::uint32_t>(identity.address));
    const std::int64_t midnightMs = startMs - startMs % dayMs;
    EventHistory past;
    for (const PastIncident& incident : pastIncidents) {
        const std::int64_t beginMs = midnightMs - incident.daysAgo * dayMs + incident.hour * hourMs +
                                     static_cast<std::int64_t>(random() % 3600) * secondMs;
        QString error;
        UnitCourse course;
        course.seed = seed;
        course.scenario = parseScenario(incident.scenario, QStringLiteral("past"), nullptr, &error).value();
        course.past = std::move(past);
        SimulatedUnit unit(identity, beginMs, nullptr, std::move(course));
        for (int second = 0; second < incident.lastsS; ++second)
            unit.advance(secondMs);
        past = unit.history();
    }
    return past;
}

} // namespace simulation
