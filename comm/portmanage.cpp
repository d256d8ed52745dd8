#include "portmanage.h"

#include "serialport.h"

#include <QDebug>
#include <QSettings>
#include <QStringList>

#include <atomic>
#include <hidapi.h>

namespace {
constexpr int TickMs = 30000;

std::atomic<PortManage*> theInstance{nullptr};

struct LineConfig
{
    QString param;
    int timeoutMs;
};

// QSettings drops the leading "/" of a key, so the port /dev/ttyS0 is section [dev/ttyS0]. A value with
// commas that stands without quotes comes as a list.
LineConfig readLineConfig(const QString& portName)
{
    const QSettings ini(QStringLiteral("serial.ini"), QSettings::IniFormat);
    const QVariant param = ini.value(portName + QLatin1String("/param"), QStringLiteral("9600,n,8,1"));
    const int timeoutMs = ini.value(portName + QLatin1String("/timeout"), 1000).toInt();
    return {param.toStringList().join(QLatin1Char(',')), timeoutMs};
}

SerialPort* portOf(const CommHandle* entry)
{
    return entry->kind == CommHandle::Serial ? static_cast<SerialPort*>(entry->device) : nullptr;
}

QString hidKey(int vendorId, int productId)
{
    return QStringLiteral("%1.%2").arg(vendorId).arg(productId);
}

void openHid(CommHandle* entry, int vendorId, int productId)
{
    if (entry->kind != CommHandle::Hid)
        return;
    hid_device* device =
        hid_open(static_cast<unsigned short>(vendorId), static_cast<unsigned short>(productId), nullptr);
    if (device)
        hid_set_nonblocking(device, 1);
    entry->device = device;
}

void closeHid(CommHandle* entry)
{
    if (entry->kind == CommHandle::Hid && entry->device)
        hid_close(static_cast<hid_device*>(entry->device));
    entry->device = nullptr;
}
} // namespace

PortManage* PortManage::instance()
{
    static QMutex creation;
    PortManage* manager = theInstance.load(std::memory_order_acquire);
    if (manager)
        return manager;
    const QMutexLocker locker(&creation);
    manager = theInstance.load(std::memory_order_acquire);
    if (!manager) {
        manager = new PortManage;
        theInstance.store(manager, std::memory_order_release);
    }
    return manager;
}

PortManage::PortManage(QObject* parent)
    : QObject(parent)
{
    // With it goes the conversion of such a map to one that any QVariant reader can walk.
    qRegisterMetaType<QMap<QString, SerialPort*>>("QMap<QString,SerialPort*>");
    connect(&m_timer, &QTimer::timeout, this, &PortManage::timerProc);
    m_timer.start(TickMs);
}

PortManage::~PortManage()
{
    PortManage* self = this;
    theInstance.compare_exchange_strong(self, nullptr);
    const QStringList keys = m_table.keys();
    for (const QString& key : keys) {
        CommHandle* entry = m_table.value(key);
        if (SerialPort* port = portOf(entry)) {
            port->close();
            delete port;
        } else {
            closeHid(entry);
        }
        delete entry;
        m_table.remove(key);
    }
}

SerialPort* PortManage::getPortHandle(QString portName)
{
    const QMutexLocker locker(&m_mutex);
    CommHandle* entry = m_table.value(portName);
    if (!entry)
        entry = createSerial(portName);
    SerialPort* port = portOf(entry);
    if (!port)
        return nullptr;
    port->Lock();
    if (!port->isOpen())
        port->ReOpen();
    port->UnLock();
    return port;
}

// A port that fails to open is stored all the same: it is tried again by every later call.
CommHandle* PortManage::createSerial(const QString& portName)
{
    const LineConfig config = readLineConfig(portName);
    auto* port = new SerialPort;
    port->CommOpen(portName, config.param, config.timeoutMs);
    auto* entry = new CommHandle;
    entry->device = port;
    m_table.insert(portName, entry);
    return entry;
}

SerialPort* PortManage::ReOpen(QString portName)
{
    SerialPort* port = getPortHandle(portName);
    if (!port)
        return nullptr;
    port->Lock();
    port->close();
    const LineConfig config = readLineConfig(portName);
    port->CommOpen(portName, config.param, config.timeoutMs);
    port->UnLock();
    return port;
}

void PortManage::Close(QString portName)
{
    SerialPort* port = getPortHandle(portName);
    if (!port)
        return;
    port->Lock();
    port->close();
    port->UnLock();
}

CommHandle* PortManage::getPortHandle(int vendorId, int productId)
{
    const QMutexLocker locker(&m_mutex);
    CommHandle*& entry = m_table[hidKey(vendorId, productId)];
    if (!entry) {
        entry = new CommHandle;
        entry->kind = CommHandle::Hid;
    }
    if (entry->kind != CommHandle::Hid)
        return &m_noDevice;
    if (!entry->device)
        openHid(entry, vendorId, productId);
    return entry;
}

CommHandle* PortManage::ReOpen(int vendorId, int productId)
{
    CommHandle* entry = getPortHandle(vendorId, productId);
    const QMutexLocker locker(&m_mutex);
    closeHid(entry);
    openHid(entry, vendorId, productId);
    qDebug() << "ReOpen" << entry->device;
    return entry;
}

void PortManage::Close(int vendorId, int productId)
{
    CommHandle* entry = getPortHandle(vendorId, productId);
    const QMutexLocker locker(&m_mutex);
    closeHid(entry);
}

void PortManage::timerProc()
{
    QStringList keys;
    {
        const QMutexLocker locker(&m_mutex);
        keys = m_table.keys();
    }
    for (const QString& key : keys)
        closeIdle(key);
}

void PortManage::closeIdle(const QString& key)
{
    const QMutexLocker locker(&m_mutex);
    const CommHandle* entry = m_table.value(key);
    SerialPort* port = entry ? portOf(entry) : nullptr;
    if (!port)
        return;
    port->Lock();
    if (port->m_usedFlag == 0)
        port->close();
    else
        port->m_usedFlag = 0;
    port->UnLock();
}
