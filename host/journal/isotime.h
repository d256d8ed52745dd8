#pragma once

#include <QString>

#include <optional>

/// Times as ISO 8601 text. Pure functions of the text and the system's time zone.
namespace isotime {

/// What a date alone stands for.
enum class DateMeans
{
    StartOfDay,
    EndOfDay ///< the start of the next day
};

/// Local time with milliseconds and offset, such as 2024-03-05T07:08:09.250+01:00.
QString fromUtcMs(qint64 utcMs);

/// A date, or a date and a time of day (seconds and their fraction may be left out), with an offset, "Z" or
/// neither for local time. Nothing when the text is anything else or no such day exists.
std::optional<qint64> toUtcMs(const QString& text, DateMeans dateMeans);

} // namespace isotime
