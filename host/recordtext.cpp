#include "recordtext.h"

#include "alarmpoints.h"
#include "eventtype.h"

namespace {

// The columns of the plugin's data-log row that a line of key values shows.
enum LogColumn
{
    InputVoltage = 0,
    InputFrequency = 1,
    OutputVoltage = 4,
    OutputLoad = 7,
    OutputMode = 9
};

// The data log runs both halves' voltages into one, has the capacity in Ah instead of percent, and calls a
// battery that is charged at constant voltage disconnected.
constexpr int batteryStatePoint = 4101;
constexpr int positiveHalfPoint = 4103;
constexpr int negativeHalfPoint = 4104;
constexpr int remainingCapacityPoint = 4111;

QString alarmText(const QVariantMap& record, const QStringList& eventTexts)
{
    const int code = record.value(QStringLiteral("alarmId")).toInt();
    const int state = record.value(QStringLiteral("alarmState")).toInt();
    QString text = state == 1 ? QStringLiteral("alarm appeared: ") : QStringLiteral("alarm cleared:  ");
    // Reserved codes have no text.
    const QString eventText = eventTexts.value(code).trimmed();
    text += eventText.isEmpty() ? QStringLiteral("event %1").arg(code)
                                : QString(QString::number(code) + QLatin1Char(' ') + eventText);
    if (state != 0 && state != 1)
        text += QStringLiteral(" (state %1)").arg(state);
    return text;
}

QString statusPointText(int pointId, const QVariantMap& record, const QStringList& eventTexts)
{
    const QString name = eventTexts.value(pointId - alarmpoints::first).trimmed();
    return QStringLiteral("status point %1%2 is now %3")
        .arg(QString::number(pointId), name.isEmpty() ? name : QStringLiteral(" (%1)").arg(name),
             QString::number(record.value(QStringLiteral("alarmState")).toInt()));
}

QString timePart(const QString& dateAndTime)
{
    return dateAndTime.section(QLatin1Char(' '), 1, 1);
}

// Padded behind the unit, so that the columns of successive lines stand below each other.
QString column(const QString& label, const QString& value, const QString& unit, int width)
{
    const QString text = label + QLatin1Char(' ') + value + QLatin1Char(' ') + unit;
    return text.leftJustified(width) + QStringLiteral("  ");
}

// "50.0/50.0/50.0" says no more than "50.0".
QString withoutRepetition(const QString& phases)
{
    QStringList parts = phases.split(QLatin1Char('/'));
    parts.removeDuplicates();
    return parts.size() == 1 ? parts.constFirst() : phases;
}

QString batteryVolts(const QMap<int, QVariant>& data)
{
    const auto volts = [&](int point) { return QString::number(data.value(point).toDouble(), 'f', 1); };
    return volts(positiveHalfPoint) + QLatin1Char('/') + volts(negativeHalfPoint);
}

QString batteryState(const QMap<int, QVariant>& data)
{
    static const QStringList names{QStringLiteral("disconnected"), QStringLiteral("standby"),
                                   QStringLiteral("charging"),     QStringLiteral("float charge"),
                                   QStringLiteral("discharging"),  QStringLiteral("charging")};
    return names.value(data.value(batteryStatePoint, -1).toInt());
}

QString valuesText(const UnitState& state, const QStringList& row)
{
    // value() gives an empty text for a column that the plugin does not have.
    const QString capacity =
        QString::number(state.liveData().value(remainingCapacityPoint).toInt()) + QStringLiteral(" %");
    const QString line =
        row.value(OutputMode).leftJustified(16) + QStringLiteral("  ") +
        column(QStringLiteral("in"), row.value(InputVoltage), QStringLiteral("V"), 22) +
        column(QString(), withoutRepetition(row.value(InputFrequency)), QStringLiteral("Hz"), 8) +
        column(QStringLiteral("out"), row.value(OutputVoltage), QStringLiteral("V"), 23) +
        column(QStringLiteral("load"), row.value(OutputLoad), QStringLiteral("%"), 21) +
        column(QStringLiteral("battery"), batteryVolts(state.liveData()), QStringLiteral("V"), 22) +
        capacity.leftJustified(5) + QStringLiteral("  ") + batteryState(state.liveData());
    return line.trimmed();
}

} // namespace

QString recordtext::describe(int type, const QVariantMap& record, const QStringList& eventTexts)
{
    switch (type) {
    case EventType::Communicating:
        return QStringLiteral("communication established");
    case EventType::CommunicationLost:
        return QStringLiteral("no answer: communication lost");
    case EventType::CommandResult:
        return QStringLiteral("command %1: %2")
            .arg(QString::number(record.value(QStringLiteral("controlId")).toInt()),
                 record.value(QStringLiteral("desc")).toString());
    case EventType::Alarm:
        return alarmText(record, eventTexts);
    case EventType::StatusPoint2368:
        return statusPointText(2368, record, eventTexts);
    case EventType::StatusPoint2022:
        return statusPointText(2022, record, eventTexts);
    case EventType::Data:
    case EventType::Echo:
        return {};
    default:
        return QStringLiteral("event of type %1").arg(type);
    }
}

QString recordtext::status(const UnitState& state, const QStringList& logRow)
{
    switch (state.contact()) {
    case UnitState::Contact::NotHeard:
        return QStringLiteral("no answer yet");
    case UnitState::Contact::Lost:
        return QStringLiteral("no answer since ") + timePart(state.silentSince());
    case UnitState::Contact::Answering:
        break;
    }
    return state.liveData().isEmpty() ? QStringLiteral("waiting for values") : valuesText(state, logRow);
}
