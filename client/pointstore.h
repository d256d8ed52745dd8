#pragma once

#include <QMap>
#include <QVariant>

/// The data map while a driver fills it: point id to latest value, always a float variant.
///
/// A driver hands over about 950 points ten times a second, nearly all with the value they had. Such a point
/// costs one step along the map and leaves it shared with whoever holds a copy. Cycle thread only.
class PointStore
{
public:
    PointStore();

    /// Sets a point, adding it or replacing its value. A value of the same bits changes nothing.
    void store(int pointId, float value);

    /// The map; copies of it are cheap and stay as they are.
    const QMap<int, QVariant>& map() const { return m_map; }

private:
    Q_DISABLE_COPY(PointStore)

    QMap<int, QVariant> m_map;
    QMap<int, QVariant>::const_iterator m_expected; // drivers report in order: the point after the last one
};
