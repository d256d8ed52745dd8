// What programs of Google Benchmark measure, as rows of the one table.

#include "googlebenchmark.h"
#include "measures.h"
#include "results.h"

void measureCycle(Results& results)
{
    const auto us = runGoogleBenchmark(QStringLiteral("bench_cycle"),
                                       {QStringLiteral("--benchmark_repetitions=15"),
                                        QStringLiteral("--benchmark_min_time=0.2"),
                                        QStringLiteral("--benchmark_enable_random_interleaving=true")});
    const double plain = us.value(QStringLiteral("plainMap"));
    const auto row = [&](const QString& what, int changing, double bar) {
        results.add({QStringLiteral("cycle"), what, QStringLiteral("us"),
                     us.value(QStringLiteral("cycle/changing:%1").arg(changing)), plain, bar,
                     QStringLiteral("filling a plain map")});
    };
    row(QStringLiteral("collector's cycle, nothing changed"), 0, 1.5);
    row(QStringLiteral("collector's cycle, all but the alarms changed"), 1, 3);
    row(QStringLiteral("collector's cycle, everything changed, 512 alarms"), 2, 3);
}

void measurePages(Results& results)
{
    const auto us =
        runGoogleBenchmark(QStringLiteral("bench_pages"), {QStringLiteral("--benchmark_repetitions=3")});
    for (auto of = us.begin(); of != us.end(); ++of) {
        const bool isShare = of.key().endsWith(QLatin1String("processor_percent"));
        if (of.key().startsWith(QLatin1String("animation")) && !isShare)
            continue; // as long as it was watched
        results.add({QStringLiteral("pages"), of.key().section(QLatin1String("/iterations"), 0, 0),
                     isShare ? QStringLiteral("%") : QStringLiteral("us"), of.value()});
    }
}
