#include "journalevent.h"

#include "eventtype.h"
#include "recordjson.h"
#include "recordtext.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <iterator>

namespace {

// What a record says of its own type; it may carry the keys of earlier events of the report as well.
struct TypeRow
{
    int type;
    const char* codeKey;  // null when the type has no code
    const char* stateKey; // null when the type has no state
    const char* keys;     // those to keep besides the common ones, a space around each
};

constexpr const char* commonKeys = " name protocol lost port timeStr ";

// clang-format off
constexpr TypeRow typeRows[] = {
    {EventType::Communicating,     nullptr,     "state",      " desc state "},
    {EventType::CommunicationLost, nullptr,     "state",      " desc state "},
    {EventType::CommandResult,     "controlId", "result",     " controlId controlValue result desc "},
    {EventType::Alarm,             "alarmId",   "alarmState", " alarmId alarmState "},
    {EventType::StatusPoint2368,   nullptr,     "alarmState", " alarmState "},
    {EventType::StatusPoint2022,   nullptr,     "alarmState", " alarmState "},
};
// clang-format on

// Any other type is a request of a unit's pages.
constexpr TypeRow requestRow = {0, "controlId", nullptr, " controlId controlValue nodeValue nodeName "};

const TypeRow& rowOf(int type)
{
    const auto* found = std::find_if(std::begin(typeRows), std::end(typeRows),
                                     [type](const TypeRow& row) { return row.type == type; });
    return found == std::end(typeRows) ? requestRow : *found;
}

std::optional<int> number(const QVariantMap& record, const char* key)
{
    const QVariant value = key ? record.value(QLatin1String(key)) : QVariant();
    return value.isValid() ? std::optional<int>(value.toInt()) : std::nullopt;
}

QByteArray keptRecord(const QVariantMap& record, const TypeRow& row)
{
    const QString kept = QLatin1String(commonKeys) + QString::fromLatin1(row.keys);
    QVariantMap own;
    for (auto it = record.constBegin(); it != record.constEnd(); ++it) {
        const QString word = QLatin1Char(' ') + it.key() + QLatin1Char(' ');
        if (kept.contains(word))
            own.insert(it.key(), it.value());
    }
    return QJsonDocument(recordjson::toJson(own).toObject()).toJson(QJsonDocument::Compact);
}

QString textOf(int type, const QVariantMap& record, const TypeRow& row, const QStringList& eventTexts)
{
    if (type == EventType::Alarm) // exactly as the plugin has it, so that journals can be compared
        return eventTexts.value(number(record, row.codeKey).value_or(-1));
    if (type == EventType::CommandResult)
        return record.value(QStringLiteral("desc")).toString();
    if (&row == &requestRow)
        return record.value(QStringLiteral("controlValue")).toString();
    return recordtext::describe(type, record, eventTexts);
}

} // namespace

std::optional<JournalEvent> journalevent::from(qint64 utcMs, const QString& unitName, int type,
                                               const QVariantMap& record, const QStringList& eventTexts)
{
    if (type == EventType::Data || type == EventType::Echo)
        return {};
    const TypeRow& row = rowOf(type);
    return JournalEvent{utcMs,
                        unitName,
                        type,
                        number(record, row.codeKey),
                        textOf(type, record, row, eventTexts),
                        number(record, row.stateKey),
                        keptRecord(record, row)};
}
