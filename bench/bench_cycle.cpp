// What a collector does for a cycle besides the driver: taking every point in, the report, the device
// information map; and what filling a plain map with the same points costs.

#include "cyclepoints.h"
#include "vek5client.h"
#include "workplace.h"

#include <benchmark/benchmark.h>

namespace cyclepoints {
int valueVariant = 0;
int alarmVariant = 0;
} // namespace cyclepoints

namespace {

using Points = QMap<int, QVariant>;

// A unit without a line: the driver beside this program is called with no device.
std::unique_ptr<vek5Client> makeCollector(Points& kept)
{
    writeFile(unitsFile(QCoreApplication::applicationDirPath()), "[A]\ncommType=2\ninterval=0\n");
    auto collector = std::make_unique<vek5Client>();
    collector->m_deviceName = QStringLiteral("A");
    collector->loadConfig();
    // Hosts keep the data map, so the next change has to leave their copy alone.
    QObject::connect(
        collector.get(), &CollectThread::postDEvent, collector.get(),
        [&kept](int type, const QVariantMap& record) {
            if (type == 2007)
                kept = record.value(QStringLiteral("data")).value<Points>();
        },
        Qt::DirectConnection);
    return collector;
}

void cycle(benchmark::State& state)
{
    cyclepoints::alarmVariant = 0;
    cyclepoints::valueVariant = 0;
    Points kept;
    const auto collector = makeCollector(kept);
    collector->poll();
    for (auto _ : state) {
        cyclepoints::valueVariant ^= state.range(0) > 0;
        cyclepoints::alarmVariant ^= state.range(0) > 1;
        collector->poll();
    }
    if (kept.size() != cyclepoints::count)
        state.SkipWithError("the collector did not get the points");
}

void plainMap(benchmark::State& state)
{
    for (auto _ : state) {
        Points points;
        cyclepoints::each([&points](int point, float value) { points.insert(point, value); });
        benchmark::DoNotOptimize(points);
    }
}

} // namespace

BENCHMARK(plainMap)->Unit(benchmark::kMicrosecond);
BENCHMARK(cycle)->ArgName("changing")->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
