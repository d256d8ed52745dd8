#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>
#include <QVector>

/// Keeps the points of a data map in a device information map, each under its id in decimal.
///
/// Entries are compared with the map itself and written only where they differ, so that a cycle without news
/// leaves a host's copies shared. The texts of the keys are made once. One object for each map.
class DeviceInfo
{
public:
    /// Brings the entries of all points in data up to date; other entries stay. The caller holds the lock
    /// of info.
    void updatePoints(QMap<QString, QVariant>& info, const QMap<int, QVariant>& data);

    /// Sets one entry unless it has this value already. The caller holds the lock of info.
    static void update(QMap<QString, QVariant>& info, const QString& key, const QVariant& value);

private:
    void updateKeys(const QMap<int, QVariant>& data);

    QVector<QString> m_keys; // of the points of the last data map, in ascending order of their ids
};

/// Identity texts that a data map carries as runs of points.
namespace identity {

/// The model text: always 16 bytes, one from each of the points 4016 to 4031, 0 for an absent one.
QByteArray modelOf(const QMap<int, QVariant>& data);

} // namespace identity
