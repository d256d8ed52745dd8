#include "collectthread.h"
#include "collectview.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>
#include <QPointer>
#include <QProcess>
#include <QTabWidget>
#include <QtTest>

namespace {

const QString pluginFile = QStringLiteral(PLUGIN_FILE);

QByteArrayList ownMethods(const QMetaObject& metaObject)
{
    QByteArrayList methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i) {
        const QMetaMethod method = metaObject.method(i);
        methods << QByteArray(method.methodType() == QMetaMethod::Signal ? "signal " : "slot ") +
                       method.typeName() + ' ' + method.methodSignature() + ' ' +
                       method.parameterNames().join(',');
    }
    return methods;
}

// What the host's own declarations say; the plugin's must say the same.
const QByteArrayList threadMethods{
    "signal void postDEvent(int,QVariantMap) type,map",
    "slot int control(int,QString) id,value",
    "slot QStringList getDataLogDesc() ",
    "slot QStringList changeLogData(QMap<int,QVariant>) data",
    "slot QStringList getEventLogDesc() ",
    "slot CollectView* getView() ",
    "slot void loadConfig() ",
    "slot CollectThread* create(void*) handle",
    "slot void release(CollectThread*) ",
    "slot void setPortHandle(void*) handle",
    "slot void flushUpsInfoSLot(QString,QVariant) key,value",
    "slot void poll() ",
    "slot int getWorkState() ",
};
const QByteArrayList viewMethods{
    "signal void postDEvent(int,QVariantMap) type,map",
    "slot void setName(QString) n",
    "slot void setLanguage(int) l",
    "slot void refreshData() ",
    "slot void refreshLayout() ",
    "slot void flushData(QMap<int,QVariant>) d",
    "slot void flushUpsInfo(QString,QVariant) key,d",
    "slot void setUserInfo(QString,int) user,level",
    "slot int control(int,QString) id,value",
};

} // namespace

class tst_PluginContract : public QObject
{
    Q_OBJECT

private slots:
    void metaData()
    {
        const QJsonObject data = QPluginLoader(pluginFile).metaData();
        QCOMPARE(data.value(QStringLiteral("IID")).toString(), QStringLiteral("com.nalo.Qt.ProInterface"));
        QCOMPARE(data.value(QStringLiteral("className")).toString(), QStringLiteral("vek5Client"));
        QCOMPARE(data.value(QStringLiteral("debug")).toBool(true), false);
        QVERIFY(data.value(QStringLiteral("MetaData")).toObject().isEmpty());
    }

    void exportedSymbols()
    {
        QProcess nm;
        nm.start(QStringLiteral("nm"), {QStringLiteral("-D"), QStringLiteral("--defined-only"),
                                        QStringLiteral("-C"), QStringLiteral("--format=posix"), pluginFile});
        QVERIFY2(nm.waitForFinished(), "nm is part of binutils");
        QByteArrayList unexpected;
        // clang-format off
        QByteArrayList missing{
            "CommOpen", "CommAccept", "CommRead", "CommWrite", "CommControl", "CommClose",
            "setModbusCRC", "checkModbufCRC", "buildCmd", "buildCmd16", "mod_Set_SetBuf",
            "UINT8_2_to_UINT16", "UINT8_4_to_UINT32", "FiltSpace", "vek5DataProce(int, float, void*)",
            "TcpCommRead(PortHandle*, char*, int)", "TcpCommWrite(PortHandle*, char*, int)",
            "qt_plugin_instance", "qt_plugin_query_metadata",
            "hid_open", "hid_close", "hid_read", "hid_write", "hid_set_nonblocking", "hid_send_feature_report",
            "hid_get_feature_report", "hid_get_manufacturer_string",
            "vtable for CollectThread", "CollectThread::staticMetaObject", "vtable for CollectView"};
        // clang-format on
        const QRegularExpression line(QStringLiteral("^(.+) [A-Zuvw] [0-9a-f]+"));
        const QRegularExpression allowed(QStringLiteral(
            "^(hid_[a-z_]+|Collect(Thread|View)::(metaObject\\(\\) const|qt_meta(cast|call)\\(.*\\)|"
            "postDEvent\\(.*\\)|staticMetaObject)|(vtable|typeinfo|typeinfo name) for "
            "Collect(Thread|View))$"));
        for (const QByteArray& row : nm.readAllStandardOutput().split('\n')) {
            const QString name = line.match(QString::fromLocal8Bit(row)).captured(1);
            const bool isRequired = missing.removeAll(name.toLocal8Bit()) > 0;
            if (!name.isEmpty() && !isRequired && !allowed.match(name).hasMatch())
                unexpected << name.toLocal8Bit();
        }
        QCOMPARE(missing, QByteArrayList());
        if (!IS_SANITIZED) // the sanitizers' own symbols are there as well
            QCOMPARE(unexpected, QByteArrayList());
    }

    void instanceIsOneAtATime()
    {
        QPluginLoader loader(pluginFile);
        QObject* first = loader.instance();
        QVERIFY2(first, qPrintable(loader.errorString()));
        QCOMPARE(loader.instance(), first);
        QCOMPARE(QByteArray(first->metaObject()->className()), QByteArray("vek5Client"));
        delete first;
        QObject* second = loader.instance();
        QVERIFY(qobject_cast<CollectThread*>(second));
    }

    void metaObjects()
    {
        QCOMPARE(ownMethods(*instance()->metaObject()->superClass()), threadMethods);
        QCOMPARE(ownMethods(CollectThread::staticMetaObject), threadMethods);
        QCOMPARE(ownMethods(CollectView::staticMetaObject), viewMethods);
        QVERIFY(instance()->metaObject()->indexOfSignal("postDEvent(int,QMap<QString,QVariant>)") >= 0);
        for (const QByteArray& name :
             {QByteArray("QMap<int,QVariant>"), QByteArray("CollectThread*"), QByteArray("QList<int>")})
            QVERIFY2(QMetaType::type(name.constData()) != QMetaType::UnknownType, name.constData());
    }

    // A host's calls go by the position in its own table of virtual operations: each must reach its namesake.
    void virtualOperations()
    {
        CollectThread* plugin = instance();
        QCOMPARE(plugin->control(1009, QString()), 1);
        QCOMPARE(plugin->getDataLogDesc().value(14), QStringLiteral("Battery state"));
        QCOMPARE(plugin->changeLogData({{4161, 2.0F}}).value(9), QStringLiteral("Load on inverter"));
        QCOMPARE(plugin->getEventLogDesc().value(785), QStringLiteral("Rectifier_Battery neutral Lost"));
        QCOMPARE(plugin->getWorkState(), 0);

        int handle = 0;
        const QPointer<CollectThread> collector(plugin->create(&handle));
        QVERIFY(collector && collector != plugin);
        QCOMPARE(collector->m_portHandle, static_cast<void*>(&handle));
        collector->setPortHandle(nullptr);
        QCOMPARE(collector->m_portHandle, nullptr);
        collector->m_deviceName = QStringLiteral("nobody");
        collector->m_tcpPort = -1;
        collector->loadConfig();
        QCOMPARE(collector->m_tcpPort, 502);
        plugin->release(collector);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(collector);

        QSignalSpy events(collector.data(), &CollectThread::postDEvent);
        QVERIFY(QMetaObject::invokeMethod(collector, "poll", Qt::DirectConnection));
        QCOMPARE(events.count(), 1);
        QCOMPARE(events.first().first().toInt(), 2007);
        QStringList texts;
        QVERIFY(QMetaObject::invokeMethod(collector, "getEventLogDesc", Q_RETURN_ARG(QStringList, texts)));
        QCOMPARE(texts.size(), 996);
        delete collector;
    }

    // Members are read where the host's declaration puts them, first to last.
    void members()
    {
        const std::unique_ptr<CollectThread> collector(instance()->create(nullptr));
        QCOMPARE(collector->m_commState, -1);
        QCOMPARE(collector->m_retryLimit, 5);
        collector->m_deviceName = QStringLiteral("first");
        collector->m_protocol = 4711;
        collector->m_retryLimit = 1;
        collector->m_manufacturer = QStringLiteral("maker");
        collector->m_configText5 = QStringLiteral("untouched");
        collector->m_previousAlarmStates.insert(3, 1);
        collector->flushUpsInfo(QStringLiteral("name"), 0);
        collector->flushData({{5, 1.5}, {2022, 3}});
        collector->flushData({{5, 2.0}});
        collector->flushUpsInfoSLot(QStringLiteral("side"), 1);

        QSignalSpy events(collector.get(), &CollectThread::postDEvent);
        collector->poll();
        QCOMPARE(events.count(), 4); // lost, its echo, alarm 3 gone, data
        const auto lost = events.first().at(1).value<QMap<QString, QVariant>>();
        QCOMPARE(lost.value(QStringLiteral("name")), QVariant(QStringLiteral("first")));
        QCOMPARE(lost.value(QStringLiteral("protocol")), QVariant(4711));
        QCOMPARE(collector->m_failureCount, 1);
        QCOMPARE(collector->m_commState, 1);
        QCOMPARE(collector->m_previousAlarmStates.value(3), 0);
        QCOMPARE(collector->m_configText5, QStringLiteral("untouched"));
        QCOMPARE(collector->m_sideInfo.size(), 1);
        QVERIFY(collector->m_infoLock.tryLock());
        QCOMPARE(collector->m_deviceInfo.value(QStringLiteral("name")), QVariant(QStringLiteral("first")));
        QCOMPARE(collector->m_deviceInfo.value(QStringLiteral("IdentManufacturer")),
                 QVariant(QStringLiteral("maker")));
        QCOMPARE(collector->m_deviceInfo.value(QStringLiteral("5")), QVariant(2.0));
        QCOMPARE(collector->m_deviceInfo.value(QStringLiteral("2022")), QVariant(3));
        collector->m_infoLock.unlock();

        CollectView view;
        view.setName(QStringLiteral("U"));
        QSignalSpy requests(&view, &CollectView::postDEvent);
        view.control(7, QStringLiteral("1"));
        QCOMPARE(requests.first().first().toInt(), 7);
        QCOMPARE(requests.first().at(1).toMap(),
                 QVariantMap({{QStringLiteral("name"), QStringLiteral("U")},
                              {QStringLiteral("controlId"), 7},
                              {QStringLiteral("controlValue"), QStringLiteral("1")}}));
    }

    // The pages of a collector, for a host that knows the interface alone: they may go before it or with it.
    void pages()
    {
        std::unique_ptr<CollectThread> collector(instance()->create(nullptr));
        collector->m_deviceName = QStringLiteral("first");
        QPointer<CollectView> view(collector->getView());
        QVERIFY(view);
        QCOMPARE(collector->getView(), view.data());
        QCOMPARE(view->m_name, QStringLiteral("first"));
        QVERIFY(view->findChild<QTabWidget*>(QStringLiteral("devStacketTable")));

        QSignalSpy requests(collector.get(), &CollectThread::postDEvent);
        view->control(7, QStringLiteral("1"));
        QCOMPARE(requests.count(), 1);
        QCOMPARE(requests.first().first().toInt(), 7);

        // A window that shows the pages takes them along while maps still arrive.
        auto window = std::make_unique<QWidget>();
        view->setParent(window.get());
        view->setUserInfo(QStringLiteral("user"), 0);
        window->show();
        int received = 0;
        connect(collector.get(), &CollectThread::postDEvent, view.data(),
                [&](int type, const QMap<QString, QVariant>& record) {
                    const QVariant data = record.value(QStringLiteral("data"));
                    if (type != 2007 || !data.canConvert<QMap<int, QVariant>>())
                        return;
                    view->flushData(data.value<QMap<int, QVariant>>());
                    ++received;
                });
        collector->start();
        QTRY_VERIFY(received > 1);
        window.reset();
        QVERIFY(!view);

        view = collector->getView();
        QVERIFY(view);
        view->show();
        collector.reset();
        QVERIFY(!view);
    }

private:
    static CollectThread* instance()
    {
        static QPluginLoader loader(pluginFile);
        return qobject_cast<CollectThread*>(loader.instance());
    }
};

QTEST_MAIN(tst_PluginContract)
#include "tst_plugincontract.moc"
