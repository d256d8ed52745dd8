#pragma once

#include <QString>

#include <optional>

/// Which part of a journal goes where.
struct ExportRequest
{
    QString journalFile;
    QString targetFile; ///< "-" is standard output; an existing file is replaced once all is written
    std::optional<qint64> fromUtcMs; ///< included
    std::optional<qint64> toUtcMs;   ///< not included
    QString unit;                    ///< empty is every unit
    QString eventCondition{}; ///< an SQL condition on the columns of table "event"; empty is every event
};

/// Writes records as CSV, in the order in which they arrived. Reads only, beside a host that writes, and
/// sees the journal as it was at one moment. Each returns what went wrong in one line, or an empty text.
namespace journalexport {

/// Columns: time, unit, type, code, text, state, record. A type without code or state leaves them empty.
QString writeEvents(const ExportRequest& request);

/// Columns: time, unit and those of the data log, under the headings that the plugin gave them.
QString writeLog(const ExportRequest& request);

} // namespace journalexport
