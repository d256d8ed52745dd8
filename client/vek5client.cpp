#include "vek5client.h"

#include "portmanage.h"
#include "serialport.h"
#include "unitsettings.h"
#include "vek5font.h"
#include "vek5view.h"

#include <QApplication>
#include <QtDebug>

vek5Client::vek5Client(CollectThread* parent)
    : CollectThread(parent)
{
    qRegisterMetaType<QMap<int, QVariant>>("QMap<int,QVariant>");
    qRegisterMetaType<CollectThread*>("CollectThread*");
    qRegisterMetaType<QList<int>>("QList<int>");
    LoadDriver();
    initHistoryInfo();
}

vek5Client::~vek5Client()
{
    m_isStopping = true;
    requestInterruption();
    quit();
    wait();
    waitForPolls();
    FreeDriver();
    deleteView();
    qDebug("~vek5Client");
}

CollectThread* vek5Client::create(void* handle)
{
    auto* collector = new vek5Client;
    collector->setPortHandle(handle);
    return collector;
}

void vek5Client::release(vek5Client* client)
{
    if (client)
        client->deleteLater();
}

QStringList vek5Client::getDataLogDesc()
{
    return vek5Font::instance()->getDataLogDesc();
}

QStringList vek5Client::changeLogData(QMap<int, QVariant> data)
{
    return vek5Font::instance()->changeLogData(data);
}

QStringList vek5Client::getEventLogDesc()
{
    return vek5Font::instance()->getEventLogDesc();
}

CollectView* vek5Client::getView()
{
    const auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application || application->thread() != QThread::currentThread()) {
        qDebug("no pages for %s: they need a QApplication and its thread", qPrintable(m_deviceName));
        return nullptr;
    }
    if (!m_view) {
        m_view = new vek5View;
        connect(m_view, &CollectView::postDEvent, this, &CollectThread::postDEvent);
    }
    m_view->refreshLayout();
    m_view->refreshData();
    m_view->setName(m_deviceName);
    return m_view;
}

void vek5Client::deleteView()
{
    if (!m_view)
        return;
    if (m_view->thread() == QThread::currentThread())
        delete m_view;
    else
        m_view->deleteLater();
}

bool vek5Client::LoadDriver()
{
    if (m_driver)
        return true;
    try {
        m_driver = std::make_unique<DriverLibrary>();
    } catch (...) {
        qDebug("load lib fail");
    }
    return true;
}

bool vek5Client::FreeDriver()
{
    const CycleGateLocker gate(m_gate);
    if (gate.isEntered())
        m_driver.reset();
    return true;
}

void vek5Client::loadConfig()
{
    const CycleGateLocker gate(m_gate);
    if (!gate.isEntered())
        return;
    m_languageCode = unitsettings::readLanguageCode();
    const UnitSettings settings = unitsettings::read(m_deviceName, getEventLogDesc().size());
    m_portName = settings.portName;
    m_deviceAddress = settings.address;
    m_retryLimit = settings.retryLimit;
    m_protocol = settings.protocol;
    m_interval = settings.intervalS;
    m_commType = settings.commType;
    m_ipAddress = settings.ipAddress;
    m_tcpPort = settings.tcpPort;
    m_eventSelection = settings.eventSelection;
    const SerialPort* port = serialPort();
    setPort(m_portName, port ? port->getPortSettings() : QString());
}

void vek5Client::setPort(QString portName, QString settings)
{
    m_portName = portName;
    m_portSettings = settings;
    m_portReopened = 1;
    if (PortManage* manager = portManager())
        manager->ReOpen(portName);
}

void vek5Client::setDevId(int id)
{
    m_deviceAddress = id;
}

QString vek5Client::utfToChina(QString s)
{
    return QString::fromUtf8(s.toLatin1());
}

// The plugin never makes a manager itself: ports are shared by all collectors of the process, and without
// the host's manager, as in the plugin instance, there is no port.
PortManage* vek5Client::portManager() const
{
    return static_cast<PortManage*>(m_portHandle);
}

SerialPort* vek5Client::serialPort() const
{
    PortManage* manager = portManager();
    return manager ? manager->getPortHandle(m_portName) : nullptr;
}
