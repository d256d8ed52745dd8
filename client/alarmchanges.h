#pragma once

#include <QMap>
#include <QVariant>
#include <QVector>

/// Finding which alarms changed between two reports.
namespace alarmchanges {

/// First alarm point: alarm i is point firstPoint + i.
constexpr int firstPoint = 2000;

/// One alarm whose state differs from the one last reported.
struct Change
{
    int index;
    int state;
};

/// The changes against the states last reported, in ascending index. An alarm missing from either map has
/// state 0.
QVector<Change> between(const QMap<int, int>& previous, const QMap<int, QVariant>& data, int alarmCount);

/// The event code of a change: the index when the alarm appeared; index + alarmCount when it went.
// Any state other than 1 counts as gone, 2 included: hosts pair events by these codes.
int eventCode(const Change& change, int alarmCount);

/// Whether the change is an alarm that appeared.
inline bool isAppearance(const Change& change)
{
    return change.state == 1;
}

} // namespace alarmchanges
