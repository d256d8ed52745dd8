#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

/// What a host knows about one unit, gathered from the unit's events. A plain value without any thread.
class UnitState
{
public:
    enum class Contact
    {
        NotHeard, ///< has never answered
        Answering,
        Lost ///< has answered before, not now
    };

    /// Takes one event of the unit. Reads only the keys that belong to the type: a record still carries
    /// those of earlier events of the same report. failedCycles is the collector's count at the event.
    void apply(int type, const QVariantMap& record, int failedCycles);

    /// A unit that missed an answer counts as lost here before its collector says so, which may take minutes.
    Contact contact() const { return m_contact; }
    /// The collector has given up on a unit that has never answered.
    bool isMissing() const { return m_contact == Contact::NotHeard && m_isToldLost; }
    /// Local time "yyyy-MM-dd hh:mm:ss" of the last answer, while there is none.
    QString silentSince() const { return m_lastAnswer; }
    /// The unit's last values, point id to value; empty unless it answers. The reports of a lost unit still
    /// carry its last values, and those must never be taken for live ones.
    const QMap<int, QVariant>& liveData() const { return m_liveData; }

private:
    void takeValues(const QVariantMap& record);
    void takeSilence(const QVariantMap& record);

    Contact m_contact = Contact::NotHeard;
    bool m_isToldLost = false; ///< by the collector, and not restored since
    QString m_lastAnswer;
    QMap<int, QVariant> m_liveData;
};
