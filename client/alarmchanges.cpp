#include "alarmchanges.h"

#include "pointvalue.h"

namespace alarmchanges {

QVector<Change> between(const QMap<int, int>& previous, const QMap<int, QVariant>& data, int alarmCount)
{
    // Both maps are walked once side by side: a look-up for each alarm would cost more than all else in a
    // report.
    QVector<Change> changes;
    auto point = data.lowerBound(firstPoint);
    auto last = previous.lowerBound(0);
    for (int i = 0; i < alarmCount; ++i) {
        int state = 0;
        if (point != data.constEnd() && point.key() == firstPoint + i) {
            state = pointvalue::asInt(point.value());
            ++point;
        }
        int lastState = 0;
        if (last != previous.constEnd() && last.key() == i) {
            lastState = last.value();
            ++last;
        }
        if (state != lastState)
            changes.append({i, state});
    }
    return changes;
}

int eventCode(const Change& change, int alarmCount)
{
    return isAppearance(change) ? change.index : alarmCount + change.index;
}

} // namespace alarmchanges
