#pragma once

#include "parameterinformation.h"

#include <QVariant>

/// How values read on the pages: functions of a record and a data map, in the C locale.
namespace displaytext {

/// What a record shows of a data map, with its unit. A point that the map lacks reads as 0, 0.0 or an empty
/// text; so does a record of an unknown type.
QString value(const ParameterInformation& record, const QMap<int, QVariant>& data);

/// The limits of a record as a user reads them, joined by the separator; empty without a range.
QString limits(const ParameterInformation& record, const QString& separator);

/// The settings tables' third column: the limits, or "-".
QString range(const ParameterInformation& record);

/// The 8-bit text in consecutive points of a data map, one byte for each, with its zero bytes.
QByteArray bytes(const QMap<int, QVariant>& data, int firstPointId, int count);

} // namespace displaytext
