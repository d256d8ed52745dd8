#pragma once

#include <QMap>
#include <QStringList>
#include <QVariant>
#include <QVector>

/// One row of the data log as a function of a data map.
namespace logrow {

/// The 15 values of a row, in the order of the headings handed out. Missing points read as 0; a state or
/// mode code outside its list takes the first text of the list, which must not be empty.
QStringList valuesOf(const QMap<int, QVariant>& data, const QVector<QString>& batteryStates,
                     const QVector<QString>& outputModes);

} // namespace logrow
