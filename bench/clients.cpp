#include "clients.h"

#include "collectthread.h"
#include "eventtype.h"
#include "failure.h"

#include <QEventLoop>

#include <cerrno>
#include <iterator>

namespace {

constexpr int unitAddress = 1;
constexpr int connectRounds = 10; // the plugin pauses before it connects, and may be refused once

int pointCount()
{
    int count = 0;
    for (const unitmap::Block& block : unitmap::blocks)
        count += block.count;
    return count;
}

} // namespace

PluginClient::PluginClient(CollectThread& factory, PortManage* ports)
    : m_collector(factory.create(ports))
{
    m_collector->m_deviceName = QStringLiteral("A");
    m_collector->loadConfig();
    m_collector->m_interval = 0; // every poll() is a cycle
    QObject::connect(
        m_collector.get(), &CollectThread::postDEvent, m_collector.get(),
        [this](int type, const QVariantMap& record) {
            if (type != EventType::Data)
                return;
            m_data = record.value(QStringLiteral("data")).value<QMap<int, QVariant>>();
            m_valuesNs = m_timer.nsecsElapsed();
        },
        Qt::DirectConnection);
    m_timer.start();
    for (int i = 0; i < connectRounds && m_data.size() != pointCount(); ++i)
        m_collector->poll();
    if (m_data.size() != pointCount())
        fail(QStringLiteral("the plugin does not reach the simulated unit"));
}

PluginClient::~PluginClient() = default;

void PluginClient::query()
{
    m_collector->poll();
    if (m_collector->m_failureCount != 0)
        fail(QStringLiteral("a query of the plugin failed"));
}

double PluginClient::queryForValues()
{
    m_timer.start();
    query();
    return static_cast<double>(m_valuesNs) / 1000;
}

std::unique_ptr<Client> LibmodbusClient::tcp(int port)
{
    return std::unique_ptr<Client>(new LibmodbusClient(modbus_new_tcp("127.0.0.1", port)));
}

std::unique_ptr<Client> LibmodbusClient::rtu(const QString& device, int baud)
{
    return std::unique_ptr<Client>(
        new LibmodbusClient(modbus_new_rtu(device.toLocal8Bit().constData(), baud, 'N', 8, 1)));
}

LibmodbusClient::LibmodbusClient(modbus_t* context)
    : m_context(context, &modbus_free)
{
    modbus_set_slave(context, unitAddress);
    if (modbus_connect(context) != 0)
        fail(QStringLiteral("libmodbus does not connect: %1").arg(QString::fromUtf8(modbus_strerror(errno))));
}

void LibmodbusClient::query()
{
    for (const unitmap::Block& block : unitmap::blocks)
        read(block);
}

void LibmodbusClient::read(const unitmap::Block& block)
{
    std::uint8_t bits[unitmap::alarmPointCount];
    std::uint16_t registers[MODBUS_MAX_READ_REGISTERS];
    int count = -1;
    if (block.function == unitmap::ReadDiscreteInputs)
        count = modbus_read_input_bits(m_context.get(), block.firstRegister, block.count, bits);
    else if (block.function == unitmap::ReadInputRegisters)
        count = modbus_read_input_registers(m_context.get(), block.firstRegister, block.count, registers);
    else
        count = modbus_read_registers(m_context.get(), block.firstRegister, block.count, registers);
    if (count != block.count)
        fail(
            QStringLiteral("a query of libmodbus failed: %1").arg(QString::fromUtf8(modbus_strerror(errno))));
}

QtSerialBusClient::QtSerialBusClient(int port, Order order)
    : m_order(order)
{
    m_client.setConnectionParameter(QModbusDevice::NetworkAddressParameter, QStringLiteral("127.0.0.1"));
    m_client.setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
    QEventLoop loop;
    QObject::connect(&m_client, &QModbusDevice::stateChanged, &loop, [&](QModbusDevice::State state) {
        if (state == QModbusDevice::ConnectedState)
            loop.quit();
    });
    QObject::connect(&m_client, &QModbusDevice::errorOccurred, &loop, &QEventLoop::quit);
    if (m_client.connectDevice() && m_client.state() != QModbusDevice::ConnectedState)
        loop.exec();
    if (m_client.state() != QModbusDevice::ConnectedState)
        fail(QStringLiteral("QtSerialBus does not connect: %1").arg(m_client.errorString()));
}

void QtSerialBusClient::query()
{
    if (m_order == Order::OneByOne) {
        for (const unitmap::Block& block : unitmap::blocks)
            finish(send(block));
        return;
    }
    QVector<QModbusReply*> replies;
    for (const unitmap::Block& block : unitmap::blocks)
        replies.append(send(block));
    for (QModbusReply* reply : qAsConst(replies))
        finish(reply);
}

QModbusReply* QtSerialBusClient::send(const unitmap::Block& block)
{
    const auto type = block.function == unitmap::ReadDiscreteInputs   ? QModbusDataUnit::DiscreteInputs
                      : block.function == unitmap::ReadInputRegisters ? QModbusDataUnit::InputRegisters
                                                                      : QModbusDataUnit::HoldingRegisters;
    QModbusReply* reply = m_client.sendReadRequest(
        QModbusDataUnit(type, block.firstRegister, static_cast<quint16>(block.count)), unitAddress);
    if (!reply)
        fail(QStringLiteral("QtSerialBus sends no request: %1").arg(m_client.errorString()));
    return reply;
}

void QtSerialBusClient::finish(QModbusReply* reply)
{
    if (!reply->isFinished()) {
        QEventLoop loop;
        QObject::connect(reply, &QModbusReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
    }
    if (reply->error() != QModbusDevice::NoError)
        fail(QStringLiteral("a query of QtSerialBus failed: %1").arg(reply->errorString()));
    delete reply;
}
