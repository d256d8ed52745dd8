#include "unitstate.h"

#include "eventtype.h"

void UnitState::apply(int type, const QVariantMap& record)
{
    switch (type) {
    case EventType::Communicating:
        m_contact = Contact::Answering;
        m_liveData.clear(); // the values of this answer follow
        break;
    case EventType::CommunicationLost:
        if (m_contact == Contact::Answering)
            m_contact = Contact::Lost;
        m_lostSince = record.value(QStringLiteral("timeStr")).toString();
        m_liveData.clear();
        break;
    case EventType::Data:
        if (m_contact == Contact::Answering)
            m_liveData = record.value(QStringLiteral("data")).value<QMap<int, QVariant>>();
        break;
    default:
        break;
    }
}
