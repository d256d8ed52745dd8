#pragma once

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QStringList>
#include <QVector>

/// What a host told of a unit's alarms and what its journal kept, held against what the unit truly did.
namespace alarmcourse {

constexpr int alarmCount = 498;
/// A state that stays so long has been read by two queries and told, on a busy machine as well.
constexpr qint64 dwellMs = 1500;

struct Transition
{
    qint64 atMs;
    int state;
};
using Course = QMap<int, QVector<Transition>>; ///< by alarm index, in the order of time

struct Span
{
    qint64 beginMs = 0;
    qint64 endMs = 0;
};

/// One row of the journal's events.
struct Kept
{
    qint64 atMs;
    int type;
    int code;
    int state;
    QString text;
};

/// What each alarm truly did, from the simulator's trace.
Course truthOf(const QList<QJsonObject>& trace);
/// From the first to the last fault of the trace.
Span faultsOf(const QList<QJsonObject>& trace);

/// The journal's events in their order, read as another program would, and those of a span of time.
QVector<Kept> journalled(const QString& file);
QVector<Kept> within(const QVector<Kept>& journal, const Span& span);

/// One line for each event that belongs into a journal, to compare what was told with what was kept.
QStringList linesOf(const QList<QJsonObject>& events);
QStringList linesOf(const QVector<Kept>& journal);

/// The codes of the alarm changes of each report: a report ends with its data event.
QVector<QVector<int>> reportsOf(const QList<QJsonObject>& events);

// The judgements name the first thing that is wrong; they are empty when nothing is.

/// Each alarm changes once in a report at the most, and a report tells its changes by ascending index,
/// appeared or cleared.
QString disorder(const QVector<QVector<int>>& reports);
/// Each event has the text of its code and the code of its half, and nothing else is kept with the alarms.
QString misworded(const QVector<Kept>& journal);
/// Of one run of a host: appearances and clearings take turns, each tells a state that the unit held shortly
/// before, and each state that stayed long enough while the unit was heard, and not about the time of the
/// silence, was told exactly once. `checked` counts these.
QString disagreement(const Course& truth, const QVector<Kept>& run, const Span& heard, const Span& silence,
                     int* checked);

} // namespace alarmcourse
