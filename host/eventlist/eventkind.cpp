#include "eventkind.h"

#include "eventtype.h"

#include <QStringList>

namespace {

QString number(int value)
{
    return QString::number(value);
}

// An event of a type without a row is a request of a unit's pages: its type is the command's id.
QString typeIs(EventType::Value type)
{
    return QStringLiteral("type = ") + number(type);
}

QString conditionOf(EventKinds::Kind kind)
{
    switch (kind) {
    case EventKinds::AlarmAppeared:
        return typeIs(EventType::Alarm) + QStringLiteral(" AND state IS 1");
    case EventKinds::AlarmCleared:
        return typeIs(EventType::Alarm) + QStringLiteral(" AND state IS NOT 1");
    case EventKinds::Lost:
        return typeIs(EventType::CommunicationLost);
    case EventKinds::Answering:
        return typeIs(EventType::Communicating);
    case EventKinds::Status:
        return QStringLiteral("type IN (%1, %2)")
            .arg(EventType::StatusPoint2368)
            .arg(EventType::StatusPoint2022);
    case EventKinds::Command:
        break;
    }
    const int others[] = {EventType::Alarm, EventType::CommunicationLost, EventType::Communicating,
                          EventType::StatusPoint2368, EventType::StatusPoint2022};
    QStringList types;
    for (const int type : others)
        types += number(type);
    return QStringLiteral("type NOT IN (%1)").arg(types.join(QStringLiteral(", ")));
}

} // namespace

EventKinds::Kind EventKinds::of(int type, std::optional<int> state)
{
    switch (type) {
    case EventType::Alarm:
        return state == 1 ? AlarmAppeared : AlarmCleared;
    case EventType::CommunicationLost:
        return Lost;
    case EventType::Communicating:
        return Answering;
    case EventType::StatusPoint2368:
    case EventType::StatusPoint2022:
        return Status;
    default:
        return Command;
    }
}

QString EventKinds::name(Kind kind)
{
    switch (kind) {
    case AlarmAppeared:
        return tr("Alarm");
    case AlarmCleared:
        return tr("Cleared");
    case Lost:
        return tr("Lost");
    case Answering:
        return tr("Answers");
    case Status:
        return tr("Status");
    case Command:
        break;
    }
    return tr("Command");
}

QString EventKinds::condition(Set kinds)
{
    if (kinds == all)
        return {};
    QStringList conditions;
    for (const Kind kind : each) {
        if (kinds.testFlag(kind))
            conditions += QLatin1Char('(') + conditionOf(kind) + QLatin1Char(')');
    }
    // No kind at all: a condition that no event meets.
    return conditions.isEmpty() ? QStringLiteral("0") : conditions.join(QStringLiteral(" OR "));
}
