// A full query by plugin and driver beside those whom a user would take instead, on the same simulated unit.

#include "clients.h"
#include "measures.h"
#include "pluginlibrary.h"
#include "portmanage.h"
#include "results.h"
#include "sampling.h"
#include "trafficlog.h"
#include "unitsimulator.h"
#include "workplace.h"

namespace {

const QString lineName = QStringLiteral("line");

// The plugin as a host has it, with one unit "A".
class PluginHost
{
public:
    explicit PluginHost(const QByteArray& unit)
        : m_plugin(QStringLiteral(RUN_DIR "/libvek5m_10-30k_Client.so"))
    {
        if (!m_plugin.factory())
            fail(m_plugin.error());
        writeFile(unitsFile(QCoreApplication::applicationDirPath()), "[A]\n" + unit);
        m_client = std::make_unique<PluginClient>(*m_plugin.factory(), &m_ports);
    }

    PluginClient& client() { return *m_client; }

private:
    PluginLibrary m_plugin; // everything else carries code of it
    PortManage m_ports;
    std::unique_ptr<PluginClient> m_client;
};

UnitSimulator serialUnit(int baud)
{
    return UnitSimulator(
        {QStringLiteral("--serial"), lineName, QStringLiteral("--baud"), QString::number(baud)});
}

Action queryBy(Client& client)
{
    return [&client] { return timeUs([&client] { client.query(); }); };
}

Action valuesBy(PluginClient& client)
{
    return [&client] { return client.queryForValues(); };
}

struct Transfer
{
    int direction;
    QByteArray bytes;
};

// The transfers of the last query in a traffic log.
QVector<Transfer> lastQueryIn(const QString& log)
{
    constexpr int timeLength = sizeof "yyyy-MM-dd HH:mm:ss.zzz " - 1;
    constexpr int directionLength = sizeof "send: " - 1;
    QFile file(log);
    file.open(QIODevice::ReadOnly);
    QVector<Transfer> transfers;
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        const int direction = line.mid(timeLength).startsWith("recv") ? 1 : 0;
        const auto bytes = QByteArray::fromHex(line.mid(timeLength + directionLength));
        if (direction == 0 && static_cast<std::uint8_t>(bytes[1]) == unitmap::blocks[0].function)
            transfers.clear();
        transfers.append({direction, bytes});
    }
    return transfers;
}

void log(const QString& file, const QVector<Transfer>& transfers)
{
    for (const Transfer& transfer : transfers) {
        timespec now = {};
        ::clock_gettime(CLOCK_REALTIME, &now);
        trafficlog::append(file, trafficlog::line(now, transfer.direction, transfer.bytes.constData(),
                                                  transfer.bytes.size()));
    }
}

// All bytes of a query, and the silence of 3.5 characters that ends every frame.
double wireTimeMs(int baud)
{
    constexpr double bitsPerCharacter = 10;
    constexpr double silence = 3.5;
    constexpr int requestLength = 8;
    constexpr int replyOverhead = 5;
    double characters = 0;
    for (const unitmap::Block& block : unitmap::blocks) {
        const int data = block.function == unitmap::ReadDiscreteInputs ? block.count / 8 : block.count * 2;
        characters += requestLength + silence + replyOverhead + data + silence;
    }
    return characters * bitsPerCharacter * 1000 / baud;
}

} // namespace

void measureTcp(Results& results)
{
    const Workplace folder;
    const UnitSimulator unit({QStringLiteral("--tcp")});
    const OnProcessor here(Role::Client);
    PluginHost host("commType=1\nipAddr=127.0.0.1\nport=" + QByteArray::number(unit.port()) + '\n');
    const auto libmodbus = LibmodbusClient::tcp(unit.port());
    QtSerialBusClient oneByOne(unit.port(), QtSerialBusClient::Order::OneByOne);
    QtSerialBusClient allAtOnce(unit.port(), QtSerialBusClient::Order::AllAtOnce);
    const auto us = medianTimesUs({valuesBy(host.client()), queryBy(*libmodbus), queryBy(oneByOne),
                                   queryBy(allAtOnce), queryBy(host.client())},
                                  1500, 200);
    const auto row = [&](const char* what, double ours, double peer, std::optional<double> bar,
                         const char* note) {
        results.add({QStringLiteral("tcp"), QLatin1String(what), QStringLiteral("us"), ours, peer, bar,
                     QLatin1String(note)});
    };
    row("full query over TCP", us[0], us[1], 1.3, "libmodbus");
    row("full query over TCP", us[0], us[2], 1, "QtSerialBus");
    row("full query over TCP", us[0], us[3], {}, "QtSerialBus, all requests at once");
    row("the same, to the end of the cycle", us[4], us[1], {}, "libmodbus");
}

void measureSerial(Results& results)
{
    const Workplace folder;
    const UnitSimulator unit = serialUnit(0);
    const OnProcessor here(Role::Client);
    // First: the plugin's way to wait for bytes, which the terminal keeps for both, does no harm to
    // libmodbus.
    const auto libmodbus = LibmodbusClient::rtu(lineName, 9600);
    PluginHost host("portName=" + lineName.toLatin1() + '\n');
    const auto transfers = lastQueryIn(trafficlog::fileName(QString(), lineName));
    const Action logging = [&] { return timeUs([&] { log(QStringLiteral("replayed.log"), transfers); }); };
    const auto us = medianTimesUs({valuesBy(host.client()), queryBy(*libmodbus), logging}, 400, 50);
    const QString measure = QStringLiteral("serial");
    results.add({measure, QStringLiteral("traffic log of one query, %1 lines").arg(transfers.size()),
                 QStringLiteral("us"), us[2]});
    results.add({measure, QStringLiteral("full query over an unpaced pty"), QStringLiteral("us"), us[0],
                 us[1], 1.3 + us[2] / us[1], QStringLiteral("libmodbus; 1.3 and the log")});
}

void measureLine(Results& results)
{
    constexpr int baud = 9600;
    const Workplace folder;
    const UnitSimulator unit = serialUnit(baud);
    const OnProcessor here(Role::Client);
    const auto libmodbus = LibmodbusClient::rtu(lineName, baud);
    PluginHost host("portName=" + lineName.toLatin1() + '\n');
    const auto us = medianTimesUs({valuesBy(host.client()), queryBy(*libmodbus)}, 9, 1);
    const QString measure = QStringLiteral("line");
    const QString what = QStringLiteral("full query at 9600 baud");
    const QString unitOfTime = QStringLiteral("ms");
    results.add(
        {measure, what, unitOfTime, us[0] / 1000, wireTimeMs(baud), 1.05, QStringLiteral("wire time")});
    results.add({measure, what, unitOfTime, us[0] / 1000, us[1] / 1000, {}, QStringLiteral("libmodbus")});
}
