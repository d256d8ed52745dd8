#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <vector>

class UnitSession;

/// Follows what users ask of units until there is an answer, and says it in one line: the setting read back
/// from the unit, or the result of a download. Other commands have no answer; they are told as sent. GUI
/// thread.
class RequestWatch : public QObject
{
    Q_OBJECT

public:
    enum class Outcome
    {
        UnderWay,
        Told, ///< what became of it is in the line, or is not known
        Done,
        Failed
    };

    /// How long a unit has to show a setting among its values: a long line takes some seconds for a round.
    static constexpr int settingLimitMs = 20000;

    explicit RequestWatch(int limitMs = settingLimitMs, QObject* parent = nullptr);

    /// Takes a request that a unit's pages made. The session must outlive the watch.
    void follow(UnitSession* session, const QVariantMap& request, bool isSent);
    /// Takes every event of a unit, after its session has.
    void takeEvent(const UnitSession& session, int type, const QVariantMap& record);

signals:
    void told(const QString& line, RequestWatch::Outcome outcome);

private:
    struct Setting
    {
        const UnitSession* session;
        QVariantMap request;
        QDeadlineTimer deadline;
        QString line; ///< unit, setting and value
    };

    static QString lineOf(const UnitSession& session, const QVariantMap& request);
    void forget(const UnitSession& session, int point);
    void readBack(const UnitSession& session);
    void giveUpLate();
    void giveUp(const UnitSession& session);

    const int m_limitMs;
    std::vector<Setting> m_settings; // in the order in which they were asked for
    QTimer m_timer;
};
