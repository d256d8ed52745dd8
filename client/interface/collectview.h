#pragma once

#include <QMap>
#include <QString>
#include <QVariant>
#include <QWidget>

/// A unit's pages, as a host sees them. GUI thread only.
///
/// Host and plugin compile this declaration separately: the order of everything in it is fixed, see
/// CollectThread.
class Q_DECL_EXPORT CollectView : public QWidget
{
    Q_OBJECT

public:
    explicit CollectView(QWidget* parent = nullptr)
        : QWidget(parent)
    {}

signals:
    /// A request of the user: its type is the command id, or 1029 for a confirmed setting.
    void postDEvent(int type, QMap<QString, QVariant> map);

public slots:
    /// Names the unit; the name goes into every request.
    virtual void setName(QString n) { m_name = n; }
    virtual void setLanguage(int l) { m_language = l; }
    /// Shows the last data map on the page that is open.
    virtual void refreshData() {}
    /// Builds the pages, or brings them up to date; may be called many times.
    virtual void refreshLayout() {}
    /// Takes a data map (point id to value) as the latest.
    virtual void flushData(QMap<int, QVariant> d) { m_data = d; }
    virtual void flushUpsInfo(QString key, QVariant d) { m_info.insert(key, d); }
    /// Says who is at the screen: level 0 views, 1 operates, 2 and above sets everything.
    virtual void setUserInfo(QString user, int level)
    {
        m_user = user;
        m_userLevel = level;
    }
    /// Asks the host for a command by emitting postDEvent with the command id as type. The result means
    /// nothing; callers ignore it.
    int control(int id, QString value)
    {
        QMap<QString, QVariant> record;
        record.insert(QStringLiteral("name"), m_name);
        record.insert(QStringLiteral("controlId"), id);
        record.insert(QStringLiteral("controlValue"), value);
        emit postDEvent(id, record);
        return 0;
    }

public:
    QMap<int, QVariant> m_data;     ///< last data map
    QMap<QString, QVariant> m_info; ///< filled by flushUpsInfo
    QString m_name;                 ///< sent as "name" in requests
    int m_language = 0;             ///< set by setLanguage
    int m_userLevel = 0;            ///< set by setUserInfo
    QString m_user;                 ///< set by setUserInfo
};
