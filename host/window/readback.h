#pragma once

#include <QMap>
#include <QVariant>

/// Whether a unit has taken a setting over. Pure functions.
namespace readback {

/// The point that a request of type 1029 sets.
int pointOf(const QVariantMap& request);

/// What a request of type 1029 asks for: "controlValue" is the point and its value as the unit stores it,
/// "3017,32", and "nodeValue" the entry as the user wrote it. A unit's values come scaled as one or the
/// other; texts have a point for each character, date and time one for each number.
bool isTaken(const QVariantMap& request, const QMap<int, QVariant>& data);

} // namespace readback
