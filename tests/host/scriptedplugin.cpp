#include "collectthread.h"

/// A collector whose unit exists in its name only: "silent..." never answers, "slow..." needs a second for
/// a cycle, any other answers at once.
class ScriptedCollector : public CollectThread
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.nalo.Qt.ProInterface")
    Q_INTERFACES(CollectThread)

public:
    ~ScriptedCollector() override { wait(); }

    QStringList getEventLogDesc() override { return {QStringLiteral("Fan"), QStringLiteral("Fan gone")}; }
    CollectThread* create(void*) override { return new ScriptedCollector; }
    void poll() override
    {
        QVariantMap record{{QStringLiteral("name"), m_deviceName},
                           {QStringLiteral("timeStr"), QStringLiteral("2024-03-05 07:08:09")}};
        if (!m_deviceName.startsWith(QLatin1String("silent"))) {
            if (m_commState != 0)
                emit postDEvent(1040, record);
            m_commState = 0;
        }
        record.insert(QStringLiteral("data"), QVariant::fromValue(QMap<int, QVariant>{{4111, 96.5F}}));
        emit postDEvent(2007, record);
    }

protected:
    void run() override
    {
        while (!isInterruptionRequested()) {
            poll();
            msleep(m_deviceName.startsWith(QLatin1String("slow")) ? 1000 : 20);
        }
    }
};

#include "scriptedplugin.moc"
