#include "unitpages.h"

#include "alarmpoints.h"
#include "collectthread.h"
#include "eventtype.h"
#include "unitsession.h"

namespace {

constexpr int downloadHistory = 1045;

// What pages ask for comes as an event of their collector: a setting, or a command with its id as the type.
// Other events may carry the id of a command that has been carried out.
bool isRequest(int type, const QVariantMap& record)
{
    const QVariant id = record.value(QStringLiteral("controlId"));
    return id.isValid() && (type == EventType::SettingRequest || type == id.toInt());
}

// Pages ask for the history also when the user chose no file for it. A unit would be busy with it for up to a
// minute, and nobody would get it.
bool isCancelledDownload(const QVariantMap& record)
{
    return record.value(QStringLiteral("controlId")).toInt() == downloadHistory &&
           record.value(QStringLiteral("controlValue")).toString().isEmpty();
}

} // namespace

UnitPages::UnitPages(UnitSession& session, QObject* parent)
    : QObject(parent)
    , m_session(&session)
    , m_view(session.collector().getView())
{
    if (!m_view)
        return;
    m_view->setName(session.name());
    m_view->refreshLayout();
    connect(&session, &UnitSession::eventReceived, this, &UnitPages::takeEvent);
}

void UnitPages::setUser(const QString& user, int level)
{
    if (m_view)
        m_view->setUserInfo(user, level);
}

void UnitPages::setShown(bool isShown)
{
    m_isShown = isShown;
    if (isShown)
        showValues();
}

void UnitPages::takeEvent(int type, const QVariantMap& record)
{
    if (isRequest(type, record)) {
        if (!isCancelledDownload(record))
            forward(record);
    } else if (m_isShown && (type == EventType::Data || type == EventType::CommunicationLost))
        showValues();
}

void UnitPages::showValues()
{
    if (!m_view || !m_session)
        return;
    // Reports of a lost unit repeat its last values: the session holds none then.
    const QMap<int, QVariant>& values = m_session->state().liveData();
    if (!values.isEmpty())
        m_view->flushData(values);
    else if (m_hasLiveValues) // no power is seen to flow any more; what was an alarm keeps its time
        m_view->flushData(alarmpoints::only(m_view->m_data));
    m_hasLiveValues = !values.isEmpty();
}

void UnitPages::forward(const QVariantMap& record)
{
    const bool isAnswering = m_session->state().contact() == UnitState::Contact::Answering;
    if (isAnswering) // queues it and returns
        m_session->collector().control(record.value(QStringLiteral("controlId")).toInt(),
                                       record.value(QStringLiteral("controlValue")).toString());
    emit requested(record, isAnswering);
}
