#pragma once

#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QVariant>

class CollectView;

/// The collector of one unit, as a host sees it: a thread that polls the unit and reports through postDEvent.
///
/// Host and plugin compile this declaration separately. Members, virtual operations, signals and slots must
/// stay in exactly this order with nothing between them, or the two disagree about every object they share.
class Q_DECL_EXPORT CollectThread : public QThread
{
    Q_OBJECT

public:
    explicit CollectThread(QObject* parent = nullptr)
        : QThread(parent)
    {}

    /// Sets one entry of the device information map. Any thread.
    void flushUpsInfo(QString key, QVariant value)
    {
        const QMutexLocker locker(&m_infoLock);
        m_deviceInfo.insert(key, value);
    }

    /// Sets one entry of the device information map for each point, under its id in decimal; entries of
    /// points that are not in data stay. Any thread.
    void flushData(QMap<int, QVariant> data)
    {
        const QMutexLocker locker(&m_infoLock);
        for (auto it = data.constBegin(); it != data.constEnd(); ++it)
            m_deviceInfo.insert(QString::number(it.key(), 10), it.value());
    }

signals:
    /// Everything the plugin tells its host. Emitted on the thread that runs the cycle; connect it with an
    /// automatic connection. The types and their keys are listed in docs/host-integration.md.
    void postDEvent(int type, QMap<QString, QVariant> map);

public slots:
    /// Queues one command for the unit; never blocks on the device. Returns 1 when queued. Any thread.
    virtual int control(int id, QString value)
    {
        Q_UNUSED(id)
        Q_UNUSED(value)
        return 0;
    }
    /// Headings of the data log, in the order of the values that changeLogData returns. Any thread.
    virtual QStringList getDataLogDesc() { return {}; }
    /// One data-log row made from a data map, one text for each heading. Any thread.
    virtual QStringList changeLogData(QMap<int, QVariant> data)
    {
        Q_UNUSED(data)
        return {};
    }
    /// Event texts by event code: the first half appearances, the second half clearings. Any thread.
    virtual QStringList getEventLogDesc() { return {}; }
    /// The unit's pages, made on the first call and owned by the collector unless the host gives them a
    /// parent; null for a device without pages. GUI thread.
    virtual CollectView* getView() { return nullptr; }
    /// Reads the unit's settings from the configuration files. Call after setting the name, before start.
    virtual void loadConfig() {}
    /// A new collector that uses handle as its port manager; the caller owns it.
    virtual CollectThread* create(void* handle)
    {
        Q_UNUSED(handle)
        return nullptr;
    }
    /// Does nothing; delete a collector yourself.
    virtual void release(CollectThread*) {}
    /// Hands in the port manager (a PortManage that outlives the collector). Call before start.
    virtual void setPortHandle(void* handle) { m_portHandle = handle; }
    /// Sets one entry of the side information map, without a lock: call it on the thread that owns the map.
    // The capital L is part of the name: hosts invoke this slot by name.
    void flushUpsInfoSLot(QString key, QVariant value) { m_sideInfo.insert(key, value); }
    /// Asks for a cycle; at most one in each interval runs unless a command waits. Blocks while it runs.
    virtual void poll() {}
    /// 1 while a cycle asked for by poll() runs, else 0.
    virtual int getWorkState() { return m_workState; }

public:
    QString m_deviceName;                 ///< set by the host before loadConfig
    int m_protocol = 0;                   ///< copied into event records
    int m_interval = 0;                   ///< seconds between cycles that poll() asks for
    int m_retryLimit = 5;                 ///< failed cycles in a row until the unit counts as lost
    int m_failureCount = 0;               ///< failed cycles in a row
    QString m_ipAddress;                  ///< TCP target
    int m_tcpPort = 0;                    ///< TCP target
    QString m_manufacturer;               ///< host-side text, reported as "IdentManufacturer"
    QString m_configText1;                ///< host-side configuration, never touched by the plugin
    QString m_configText2;                ///< as above
    QString m_configText3;                ///< as above
    QString m_configText4;                ///< as above
    QString m_configText5;                ///< as above
    int m_commState = -1;                 ///< -1 not yet known, 0 communicating, 1 lost
    QMap<int, int> m_eventSelection;      ///< event code to selected flag
    QMap<int, int> m_previousAlarmStates; ///< last reported states; cycle thread only
    QMap<QString, QVariant> m_sideInfo;   ///< written by flushUpsInfoSLot, not locked
    QMap<QString, QVariant> m_deviceInfo; ///< identity and last values; take m_infoLock to read it
    void* m_portHandle = nullptr;         ///< the port manager, a PortManage
    int m_workState = 0;                  ///< see getWorkState
    QMutex m_infoLock;                    ///< guards m_deviceInfo
};

Q_DECLARE_INTERFACE(CollectThread, "com.nalo.Qt.ProInterface")
