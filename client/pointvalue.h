#pragma once

#include <QMap>
#include <QVariant>

/// Reading points of a data map. A point that is absent reads as 0, and reading never adds it.
namespace pointvalue {

/// A value as an int, rounded as QVariant::toInt() rounds; 0 for what no int can hold.
int asInt(const QVariant& value);

/// A point of the map as an int; 0 when absent.
int intAt(const QMap<int, QVariant>& data, int pointId);

/// Whether two values are of one type and equal; floats by their bits, so that a value that is no number
/// equals itself and is not reported as new for ever.
bool isSame(const QVariant& a, const QVariant& b);

} // namespace pointvalue
