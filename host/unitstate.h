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
    /// those of earlier events of the same report.
    void apply(int type, const QVariantMap& record);

    Contact contact() const { return m_contact; }
    /// Local time "yyyy-MM-dd hh:mm:ss" of the last loss.
    QString lostSince() const { return m_lostSince; }
    /// The unit's last values, point id to value; empty unless it answers. The reports of a lost unit still
    /// carry its last values, and those must never be taken for live ones.
    const QMap<int, QVariant>& liveData() const { return m_liveData; }

private:
    Contact m_contact = Contact::NotHeard;
    QString m_lostSince;
    QMap<int, QVariant> m_liveData;
};
