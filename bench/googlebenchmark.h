#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// Runs a program of Google Benchmark that lies beside this one, on the client's processor, and returns by
/// name the medians of its benchmarks in us of processor time, and of their counters by name and counter with
/// a blank between.
QMap<QString, double> runGoogleBenchmark(const QString& program, const QStringList& options);
