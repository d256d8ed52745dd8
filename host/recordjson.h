#pragma once

#include <QJsonValue>
#include <QVariantMap>

/// Records as JSON. Pure functions.
namespace recordjson {

/// One value: maps with integer keys become objects, byte texts become text up to their first zero byte
/// (hexadecimal when that is not printable), floats keep their shortest form.
QJsonValue toJson(const QVariant& value);

/// One event as one line without its end: {"unit":...,"type":...,"record":{...}}. A data event gets
/// "live":false before its record when its unit does not answer, because it then repeats old values.
QByteArray eventLine(const QString& unitName, int type, const QVariantMap& record, bool isAnswering);

} // namespace recordjson
