// The smallest host: waits until one unit of PVMX/drovaPanel/db/dev.ini beside the program answers, prints
// how many values came, and ends.

#include <collectthread.h>
#include <portmanage.h>

#include <QCoreApplication>
#include <QPluginLoader>
#include <QSemaphore>

#include <memory>

// The port manager's tick waits for a running query, so it has a thread of its own.
struct PortThread : QThread
{
    PortManage* manager = nullptr;
    QSemaphore isReady;

    void run() override
    {
        PortManage ports;
        manager = &ports;
        isReady.release();
        exec();
    }
};

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    // Before the plugin does it: the code that copies such values must not go away with the plugin.
    qRegisterMetaType<QMap<int, QVariant>>("QMap<int,QVariant>");
    QPluginLoader loader(QStringLiteral(PLUGIN_FILE));
    auto* factory = qobject_cast<CollectThread*>(loader.instance());
    if (!factory || argc != 2) {
        qWarning("%s", factory ? "usage: example-host UNIT" : qPrintable(loader.errorString()));
        return EXIT_FAILURE;
    }
    PortThread portThread;
    portThread.start();
    portThread.isReady.acquire();
    std::unique_ptr<CollectThread> unit(factory->create(portThread.manager));
    unit->m_deviceName = QString::fromLocal8Bit(argv[1]);
    unit->loadConfig();
    bool isHeard = false;
    QObject::connect(unit.get(), &CollectThread::postDEvent, &application, [&](int type, const auto& record) {
        isHeard = isHeard || type == 1040;
        if (type == 2007 && isHeard) // before the first answer its values are zeros
            qInfo("%d values", record[QStringLiteral("data")].template value<QMap<int, QVariant>>().size());
        if (type == 1041 || (type == 2007 && isHeard))
            QCoreApplication::exit(isHeard ? EXIT_SUCCESS : EXIT_FAILURE); // 1041: lost
    });
    unit->start();
    const int exitCode = application.exec();
    unit.reset(); // ends its thread; before the port manager, whose ports it uses
    portThread.quit();
    portThread.wait();
    return exitCode;
}
