#include "recordjson.h"

#include "eventtype.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace {

using DataMap = QMap<int, QVariant>;

QJsonObject recordObject(const QVariantMap& record)
{
    QJsonObject object;
    for (auto it = record.constBegin(); it != record.constEnd(); ++it)
        object.insert(it.key(), recordjson::toJson(it.value()));
    return object;
}

QJsonObject dataObject(const DataMap& data)
{
    QJsonObject object;
    for (auto it = data.constBegin(); it != data.constEnd(); ++it)
        object.insert(QString::number(it.key()), recordjson::toJson(it.value()));
    return object;
}

// 219.95 as a float is 219.9499969482422 as a double: what a reader wants is the shortest text that
// stands for the same float.
double shortestDouble(float value)
{
    constexpr int maxDigits = 9; // enough for every float
    if (!std::isfinite(value) || std::trunc(value) == value)
        return static_cast<double>(value);
    for (int digits = 6; digits < maxDigits; ++digits) {
        const QByteArray text = QByteArray::number(static_cast<double>(value), 'g', digits);
        if (text.toFloat() == value)
            return text.toDouble();
    }
    return QByteArray::number(static_cast<double>(value), 'g', maxDigits).toDouble();
}

QString byteText(const QByteArray& bytes)
{
    const QByteArray text = bytes.mid(0, bytes.indexOf('\0')); // -1 means all of it
    const auto isPrintable = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte >= 0x20 && byte < 0x7f) || byte >= 0xa0;
    };
    if (std::all_of(text.begin(), text.end(), isPrintable))
        return QString::fromLatin1(text);
    return QString::fromLatin1(bytes.toHex());
}

QByteArray quoted(const QString& text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

} // namespace

QJsonValue recordjson::toJson(const QVariant& value)
{
    if (value.userType() == qMetaTypeId<DataMap>())
        return dataObject(value.value<DataMap>());
    switch (value.userType()) {
    case QMetaType::QVariantMap:
        return recordObject(value.toMap());
    case QMetaType::QByteArray:
        return byteText(value.toByteArray());
    case QMetaType::Float:
        return shortestDouble(value.toFloat());
    default:
        return QJsonValue::fromVariant(value);
    }
}

QByteArray recordjson::eventLine(const QString& unitName, int type, const QVariantMap& record,
                                 bool isAnswering)
{
    // Put together by hand, because an object would sort its keys and hide unit and type behind a record
    // of a thousand values.
    const QByteArray body = QJsonDocument(recordObject(record)).toJson(QJsonDocument::Compact);
    QByteArray line = "{\"unit\":";
    line += quoted(unitName);
    line += ",\"type\":";
    line += QByteArray::number(type);
    if (type == EventType::Data)
        line += isAnswering ? ",\"live\":true" : ",\"live\":false";
    line += ",\"record\":";
    line += body;
    line += '}';
    return line;
}
