#pragma once

#include <QString>

#include <stdexcept>

/// Ends the run with a line that says what failed: a benchmark of failures is none. An exception, so that the
/// simulated units end as well.
[[noreturn]] inline void fail(const QString& reason)
{
    throw std::runtime_error(reason.toStdString());
}
