#include "unitpages.h"

#include "collectthread.h"
#include "eventtype.h"
#include "unitsession.h"

namespace {

// What pages ask for comes as an event of their collector: a setting, or a command with its id as the type.
// Other events may carry the id of a command that has been carried out.
bool isRequest(int type, const QVariantMap& record)
{
    const QVariant id = record.value(QStringLiteral("controlId"));
    return id.isValid() && (type == EventType::SettingRequest || type == id.toInt());
}

} // namespace

UnitPages::UnitPages(UnitSession& session, const QString& user, int level, QObject* parent)
    : QObject(parent)
    , m_view(session.collector().getView())
{
    if (!m_view)
        return;
    m_view->setName(session.name());
    m_view->refreshLayout();
    m_view->setUserInfo(user, level);
    connect(&session, &UnitSession::eventReceived, this,
            [this, &session](int type, const QVariantMap& record) { takeEvent(session, type, record); });
}

void UnitPages::takeEvent(UnitSession& session, int type, const QVariantMap& record)
{
    if (isRequest(type, record))
        session.collector().control(record.value(QStringLiteral("controlId")).toInt(),
                                    record.value(QStringLiteral("controlValue")).toString());
    // Reports of a lost unit repeat its last values: the session holds none then.
    else if (type == EventType::Data && m_view && !session.state().liveData().isEmpty())
        m_view->flushData(session.state().liveData());
}
