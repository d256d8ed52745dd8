#pragma once

#include <QJsonValue>
#include <QVariantMap>

/// Records as JSON. Pure functions.
namespace recordjson {

/// One value: maps with integer keys become objects, byte texts become text up to their first zero byte
/// (hexadecimal when that is not printable), floats keep their shortest form.
QJsonValue toJson(const QVariant& value);

/// One event as one line without its end: {"unit":...,"type":...,"record":{...}}.
QByteArray eventLine(const QString& unitName, int type, const QVariantMap& record);

} // namespace recordjson
