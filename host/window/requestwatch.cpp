#include "requestwatch.h"

#include "commandnames.h"
#include "eventtype.h"
#include "readback.h"
#include "unitsession.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

constexpr int lookMs = 250;
constexpr int downloadHistory = 1045; // the one command that a unit answers

int idOf(const QVariantMap& request)
{
    return request.value(QStringLiteral("controlId")).toInt();
}

// A setting bears the name that its page shows, often with a colon at its end.
QString settingName(const QVariantMap& request)
{
    QString name = request.value(QStringLiteral("nodeName")).toString().trimmed();
    if (name.endsWith(QLatin1Char(':')))
        name.chop(1);
    return name;
}

} // namespace

RequestWatch::RequestWatch(int limitMs, QObject* parent)
    : QObject(parent)
    , m_limitMs(limitMs)
{
    connect(&m_timer, &QTimer::timeout, this, &RequestWatch::giveUpLate);
    m_timer.setInterval(lookMs);
}

QString RequestWatch::lineOf(const UnitSession& session, const QVariantMap& request)
{
    const int id = idOf(request);
    const QString setting = settingName(request);
    if (!setting.isEmpty())
        return tr("%1: %2 = %3")
            .arg(session.name(), setting, request.value(QStringLiteral("nodeValue")).toString());
    const auto* row = std::find_if(std::begin(commandnames::all), std::end(commandnames::all),
                                   [id](const commandnames::Name& known) { return known.id == id; });
    const QString name = row == std::end(commandnames::all)
                             ? tr("Command %1").arg(id)
                             : QCoreApplication::translate("EventText", row->text);
    return tr("%1: %2").arg(session.name(), name);
}

void RequestWatch::follow(UnitSession* session, const QVariantMap& request, bool isSent)
{
    const QString line = lineOf(*session, request);
    if (!isSent) {
        emit told(tr("%1 - not sent, the unit does not answer").arg(line), Outcome::Failed);
    } else if (request.contains(QStringLiteral("nodeValue"))) {
        forget(*session, readback::pointOf(request)); // the earlier value is no longer wanted
        m_settings.push_back({session, request, QDeadlineTimer(m_limitMs), line});
        m_timer.start();
        emit told(tr("%1 - sent, waiting for the unit to show it").arg(line), Outcome::UnderWay);
    } else if (idOf(request) == downloadHistory) {
        emit told(tr("%1 - under way, it takes up to a minute").arg(line), Outcome::UnderWay);
    } else {
        emit told(tr("%1 - sent").arg(line), Outcome::Told);
    }
}

void RequestWatch::forget(const UnitSession& session, int point)
{
    const auto isMeant = [&](const Setting& setting) {
        return setting.session == &session && readback::pointOf(setting.request) == point;
    };
    m_settings.erase(std::remove_if(m_settings.begin(), m_settings.end(), isMeant), m_settings.end());
}

void RequestWatch::takeEvent(const UnitSession& session, int type, const QVariantMap& record)
{
    if (type == EventType::CommandResult)
        emit told(record.value(QStringLiteral("desc")).toString(), Outcome::Told); // it names the unit
    else if (type == EventType::CommunicationLost)
        giveUp(session);
    else if (type == EventType::Data && !m_settings.empty() && !session.state().liveData().isEmpty())
        readBack(session);
}

void RequestWatch::readBack(const UnitSession& session)
{
    const QMap<int, QVariant>& data = session.state().liveData();
    const auto isDone = [&](const Setting& setting) {
        return setting.session == &session && readback::isTaken(setting.request, data);
    };
    // Told only after all are sorted: whoever listens may ask for more.
    const auto firstDone = std::stable_partition(m_settings.begin(), m_settings.end(),
                                                 [&](const Setting& setting) { return !isDone(setting); });
    const std::vector<Setting> done(firstDone, m_settings.end());
    m_settings.erase(firstDone, m_settings.end());
    for (const Setting& setting : done)
        emit told(tr("%1 - done, read back from the unit").arg(setting.line), Outcome::Done);
}

void RequestWatch::giveUpLate()
{
    while (!m_settings.empty() && m_settings.front().deadline.hasExpired()) {
        const Setting late = m_settings.front();
        m_settings.erase(m_settings.begin());
        emit told(late.session->state().liveData().isEmpty()
                      ? tr("%1 - unknown, the unit fell silent before it showed it").arg(late.line)
                      : tr("%1 - the unit still has another value").arg(late.line),
                  Outcome::Failed);
    }
    if (m_settings.empty())
        m_timer.stop();
}

void RequestWatch::giveUp(const UnitSession& session)
{
    for (;;) {
        const auto found = std::find_if(m_settings.begin(), m_settings.end(),
                                        [&](const Setting& setting) { return setting.session == &session; });
        if (found == m_settings.end())
            return;
        const QString line = found->line;
        m_settings.erase(found);
        emit told(tr("%1 - unknown, the unit fell silent before it showed it").arg(line), Outcome::Failed);
    }
}
