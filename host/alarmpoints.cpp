#include "alarmpoints.h"

#include <algorithm>

int alarmpoints::activeCount(const QMap<int, QVariant>& data)
{
    // Any other value than 1 counts as inactive.
    return static_cast<int>(std::count_if(data.lowerBound(first), data.lowerBound(first + count),
                                          [](const QVariant& state) { return state.toInt() == 1; }));
}

QMap<int, QVariant> alarmpoints::only(const QMap<int, QVariant>& data)
{
    QMap<int, QVariant> result;
    const auto end = data.lowerBound(first + count);
    for (auto point = data.lowerBound(first); point != end; ++point)
        result.insert(result.constEnd(), point.key(), point.value());
    return result;
}
