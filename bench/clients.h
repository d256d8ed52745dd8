#pragma once

#include "unitmap.h"

#include <QElapsedTimer>
#include <QMap>
#include <QModbusTcpClient>
#include <QVariant>

#include <memory>
#include <modbus.h>

class CollectThread;
class PortManage;

/// Somebody who reads the 952 points of a unit, in the blocks of unitmap::blocks. A query that fails ends the
/// run (see failure.h).
class Client
{
public:
    virtual ~Client() = default;
    virtual void query() = 0;
};

/// The plugin's collector and the driver. A query is a cycle: poll() reads the unit and reports, and a host
/// takes the report as it always does, by keeping the data map.
class PluginClient : public Client
{
public:
    /// The configuration of a unit named "A" must be there.
    PluginClient(CollectThread& factory, PortManage* ports);
    ~PluginClient() override;
    void query() override;
    /// A query; returns the us from its begin until the host had the values. The cycle goes on after that.
    double queryForValues();

private:
    std::unique_ptr<CollectThread> m_collector;
    QMap<int, QVariant> m_data;
    QElapsedTimer m_timer;
    qint64 m_valuesNs = 0;
};

/// libmodbus, its registers as they come.
class LibmodbusClient : public Client
{
public:
    static std::unique_ptr<Client> tcp(int port);
    static std::unique_ptr<Client> rtu(const QString& device, int baud);
    void query() override;

private:
    explicit LibmodbusClient(modbus_t* context);
    void read(const unitmap::Block& block);

    std::unique_ptr<modbus_t, decltype(&modbus_free)> m_context;
};

/// Qt's own Modbus client, on an event loop as it is meant to be used.
class QtSerialBusClient : public Client
{
public:
    enum class Order
    {
        OneByOne,  ///< as the others do it
        AllAtOnce, ///< all requests before the first reply; units need not take that
    };
    QtSerialBusClient(int port, Order order);
    void query() override;

private:
    QModbusReply* send(const unitmap::Block& block);
    void finish(QModbusReply* reply);

    QModbusTcpClient m_client;
    Order m_order;
};
