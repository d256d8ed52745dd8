#include "googlebenchmark.h"

#include "failure.h"
#include "processors.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace {

constexpr int patienceMs = 300000;

double microseconds(double time, const QString& unit)
{
    if (unit == QLatin1String("ns"))
        return time / 1000;
    return unit == QLatin1String("ms") ? time * 1000 : time;
}

} // namespace

QMap<QString, double> runGoogleBenchmark(const QString& program, const QStringList& options)
{
    const OnProcessor here(Role::Client);
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + QLatin1Char('/') + program,
                  QStringList{QStringLiteral("--benchmark_format=json"),
                              QStringLiteral("--benchmark_report_aggregates_only=true")} +
                      options);
    process.waitForFinished(patienceMs);
    const QJsonArray benchmarks = QJsonDocument::fromJson(process.readAllStandardOutput())
                                      .object()
                                      .value(QStringLiteral("benchmarks"))
                                      .toArray();
    QMap<QString, double> medians;
    for (const QJsonValue& value : benchmarks) {
        const QJsonObject benchmark = value.toObject();
        if (benchmark.value(QStringLiteral("aggregate_name")).toString() != QLatin1String("median"))
            continue;
        const QString name = benchmark.value(QStringLiteral("run_name")).toString();
        medians.insert(name, microseconds(benchmark.value(QStringLiteral("cpu_time")).toDouble(),
                                          benchmark.value(QStringLiteral("time_unit")).toString()));
        const auto counter = benchmark.find(QStringLiteral("processor_percent"));
        if (counter != benchmark.end())
            medians.insert(name + QLatin1Char(' ') + counter.key(), counter.value().toDouble());
    }
    if (medians.isEmpty())
        fail(QStringLiteral("%1 has no results: %2")
                 .arg(program, QString::fromLocal8Bit(process.readAllStandardError())));
    return medians;
}
