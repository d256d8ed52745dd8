#pragma once

#include <QMap>
#include <QVariant>

/// The part of a data map that tells which alarms are active. Pure functions.
namespace alarmpoints {

constexpr int first = 2000; ///< alarm i has the point behind it by i
constexpr int count = 512;

/// How many alarms are active.
int activeCount(const QMap<int, QVariant>& data);

/// These points and no others.
QMap<int, QVariant> only(const QMap<int, QVariant>& data);

} // namespace alarmpoints
