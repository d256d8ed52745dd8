#include "eventtext.h"

#include "commandnames.h"
#include "eventkind.h"
#include "eventtype.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <iterator>

QString EventText::describe(const JournalEvent& event)
{
    QString text;
    if (event.type == EventType::SettingRequest)
        text = settingText(event);
    else if (event.type != EventType::CommandResult &&
             EventKinds::of(event.type, event.state) == EventKinds::Command)
        text = commandText(event);
    else if (event.type == EventType::Communicating)
        text = tr("Communication established");
    else if (event.type == EventType::CommunicationLost)
        text = tr("No answer: communication lost");
    else if (event.type == EventType::StatusPoint2368 || event.type == EventType::StatusPoint2022)
        text = statusText(event);
    else
        text = event.text.simplified(); // texts of a unit may hold anything, a list has one line for each
    if (!text.isEmpty())
        return text;
    return event.code ? tr("Event %1").arg(*event.code) : tr("Event of type %1").arg(event.type);
}

// The name comes in the text that was kept: "status point 2022 (name) is now 1".
QString EventText::statusText(const JournalEvent& event)
{
    const int begin = event.text.indexOf(QLatin1Char('(')) + 1;
    const int end = event.text.lastIndexOf(QLatin1Char(')'));
    const QString name = begin > 0 && end > begin ? event.text.mid(begin, end - begin).simplified()
                                                  : QString::number(event.code.value_or(event.type));
    const QJsonObject record = QJsonDocument::fromJson(event.recordJson).object();
    return record.value(QLatin1String("alarmState")).toInt() == 0 ? tr("Status point off: %1").arg(name)
                                                                  : tr("Status point on: %1").arg(name);
}

QString EventText::settingText(const JournalEvent& event)
{
    const QJsonObject record = QJsonDocument::fromJson(event.recordJson).object();
    QString name = record.value(QLatin1String("nodeName")).toString().simplified();
    if (name.endsWith(QLatin1Char(':')))
        name.chop(1);
    const QString value = record.value(QLatin1String("nodeValue")).toVariant().toString().simplified();
    if (name.isEmpty())
        return tr("Setting requested: %1").arg(event.text.simplified());
    return tr("Setting requested: %1 = %2").arg(name, value);
}

QString EventText::commandText(const JournalEvent& event)
{
    const QString argument = event.text.simplified();
    const QString name = commandName(event.code.value_or(event.type));
    return argument.isEmpty() ? tr("Command requested: %1").arg(name)
                              : tr("Command requested: %1 (%2)").arg(name, argument);
}

QString EventText::commandName(int id)
{
    const auto* found = std::find_if(std::begin(commandnames::all), std::end(commandnames::all),
                                     [id](const commandnames::Name& name) { return name.id == id; });
    return found == std::end(commandnames::all) ? QString::number(id) : tr(found->text);
}
