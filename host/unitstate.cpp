#include "unitstate.h"

#include "eventtype.h"

void UnitState::apply(int type, const QVariantMap& record, int failedCycles)
{
    switch (type) {
    case EventType::Communicating:
        m_contact = Contact::Answering;
        m_isToldLost = false;
        m_liveData.clear(); // the values of this answer follow
        break;
    case EventType::CommunicationLost:
        m_isToldLost = true;
        takeSilence(record);
        break;
    case EventType::Data:
        if (failedCycles > 0 || m_isToldLost)
            takeSilence(record);
        else
            takeValues(record);
        break;
    default:
        break;
    }
}

void UnitState::takeValues(const QVariantMap& record)
{
    if (m_contact == Contact::NotHeard)
        return;
    m_contact = Contact::Answering;
    m_lastAnswer = record.value(QStringLiteral("timeStr")).toString();
    m_liveData = record.value(QStringLiteral("data")).value<QMap<int, QVariant>>();
}

void UnitState::takeSilence(const QVariantMap& record)
{
    if (m_contact == Contact::NotHeard)
        return;
    m_contact = Contact::Lost;
    if (m_lastAnswer.isEmpty())
        m_lastAnswer = record.value(QStringLiteral("timeStr")).toString();
    m_liveData.clear();
}
