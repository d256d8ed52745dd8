#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

/// One event of a unit. All times in the journal are milliseconds since 1970 in UTC.
struct JournalEvent
{
    qint64 utcMs = 0;
    QString unit;
    int type = 0;
    std::optional<int> code; ///< which alarm or command; not every type has one
    QString text;            ///< as it read when the event happened
    std::optional<int> state;
    QByteArray recordJson; ///< everything that belongs to the event, as JSON
};

/// One row of the data log: a text for each column of schema::logColumns, in that order.
struct LogRow
{
    qint64 utcMs = 0;
    QString unit;
    QStringList values;
};

enum class PeriodEnding
{
    Open,    ///< the unit still answers
    Lost,    ///< the unit no longer answered
    Stopped, ///< the host ended while the unit answered
};

/// A time in which a unit answered. Unit and beginning name it: a later record of the same replaces it.
struct CommunicationPeriod
{
    QString unit;
    qint64 fromUtcMs = 0;
    std::optional<qint64> toUtcMs; ///< absent while open
    PeriodEnding ending = PeriodEnding::Open;
};

using JournalRecord = std::variant<JournalEvent, CommunicationPeriod, LogRow>;
