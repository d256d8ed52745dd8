#include "unitcheck.h"

#include "lineoutput.h"
#include "portaccess.h"
#include "portmanage.h"
#include "portusers.h"
#include "serialport.h"
#include "tracedport.h"
#include "wiretime.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QNetworkProxy>
#include <QTcpSocket>

#include <unistd.h>

using diagnosis::Finding;

namespace {

constexpr int connectTimeoutMs = 5000;
constexpr int bytesPerRow = 24;

void countValue(int, float, void* context)
{
    ++*static_cast<int*>(context);
}

/// The group whose members may open the device; empty when it may not, or nobody should be in it.
QString groupOf(const QString& device)
{
    const QFileInfo info(device);
    const bool mayOpen = info.permission(QFile::ReadGroup | QFile::WriteGroup) && info.groupId() != 0;
    return mayOpen ? info.group() : QString();
}

Finding findingOf(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return Finding::Refused;
    case QAbstractSocket::HostNotFoundError:
        return Finding::UnknownHost;
    default:
        return Finding::Unreachable;
    }
}

} // namespace

UnitCheck::UnitCheck(const QString& unitName, const CheckSettings& settings, const DriverEntries& driver,
                     PortManage& ports, LineOutput& output, std::function<bool()> isStopped)
    : m_unitName(unitName)
    , m_settings(settings)
    , m_driver(driver)
    , m_ports(ports)
    , m_output(output)
    , m_isStopped(std::move(isStopped))
{
    m_facts.isTcp = settings.isTcp;
    m_facts.target = settings.isTcp
                         ? QString(settings.host + QLatin1Char(':') + QString::number(settings.tcpPort))
                         : settings.portName;
    m_facts.settings = settings.lineSettings;
    m_facts.address = settings.address;
    m_facts.timeoutMs = settings.timeoutMs;
    if (!settings.isTcp)
        m_facts.group = groupOf(settings.portName);
}

bool UnitCheck::run()
{
    m_output.write(m_unitName.toUtf8());
    print(QStringLiteral("settings"), m_settings.described.join(QStringLiteral(", ")));
    const Finding finding = find();
    m_facts.otherUnit = diagnosis::otherUnitIn(m_exchanges, m_settings.address);
    if (finding == Finding::Healthy)
        print(QStringLiteral("result"), QStringLiteral("the unit answers"));
    else
        print(QStringLiteral("advice"), diagnosis::advice(finding, m_facts));
    return finding == Finding::Healthy;
}

Finding UnitCheck::find()
{
    print(QStringLiteral("driver"), m_driver.description());
    if (!m_driver.query())
        return Finding::NoDriver;
    return m_settings.isTcp ? findOnTcp() : findOnLine();
}

Finding UnitCheck::findOnLine()
{
    SerialPort* port = m_ports.getPortHandle(m_settings.portName);
    if (!port || !port->isOpen())
        return whyNotOpen();
    const PortSettings line = port->settingsInForce();
    print(QStringLiteral("port"), QStringLiteral("%1 is present, permitted and open at %2 baud")
                                      .arg(m_settings.portName)
                                      .arg(wiretime::baudOf(line.BaudRate)));
    m_facts.users = otherUsersOf(m_settings.portName).join(QStringLiteral(", "));
    port->Lock();
    const Finding finding =
        query({static_cast<QIODevice*>(port), CommRead, CommWrite}, [port] { return port->isOpen(); });
    port->UnLock();
    const double wireMs = wiretime::queryMs(m_exchanges, line);
    if (finding == Finding::Healthy && wireMs > 0)
        print(QStringLiteral("wire"),
              QStringLiteral("all frames take %1 ms on the line: no poll of this unit can "
                             "be shorter at this speed")
                  .arg(wireMs, 0, 'f', 0));
    return finding == Finding::Healthy || m_facts.users.isEmpty() ? finding : Finding::SharedLine;
}

Finding UnitCheck::whyNotOpen()
{
    if (!QFileInfo::exists(m_settings.portName)) {
        print(QStringLiteral("port"), QStringLiteral("%1 is not there").arg(m_settings.portName));
        return Finding::NoSuchDevice;
    }
    if (::access(QFile::encodeName(m_settings.portName).constData(), R_OK | W_OK) != 0) {
        print(QStringLiteral("port"),
              QStringLiteral("%1 is present, not permitted").arg(m_settings.portName));
        return m_facts.group.isEmpty() ? Finding::NotPermittedToAnyone : Finding::NotPermitted;
    }
    print(QStringLiteral("port"),
          QStringLiteral("%1 is present, permitted, and does not open").arg(m_settings.portName));
    return Finding::NotALine;
}

Finding UnitCheck::findOnTcp()
{
    QTcpSocket socket;
    socket.setProxy(QNetworkProxy::NoProxy);
    QElapsedTimer timer;
    timer.start();
    socket.connectToHost(m_settings.host, static_cast<quint16>(m_settings.tcpPort));
    if (!socket.waitForConnected(connectTimeoutMs)) {
        print(QStringLiteral("host"), QStringLiteral("%1: %2").arg(m_facts.target, socket.errorString()));
        return findingOf(socket.error());
    }
    print(QStringLiteral("host"), QStringLiteral("%1 is %2, connected after %3 ms")
                                      .arg(m_facts.target, socket.peerAddress().toString())
                                      .arg(timer.elapsed()));
    return query({static_cast<QIODevice*>(&socket), TcpCommRead, TcpCommWrite},
                 [&socket] { return socket.state() == QAbstractSocket::ConnectedState; });
}

Finding UnitCheck::query(const PortHandle& handle, const std::function<bool()>& isConnected)
{
    TracedPort traced(handle, m_isStopped);
    int values = 0;
    QElapsedTimer timer;
    timer.start();
    const bool hasAnswered = m_driver.query()(traced.handle(), m_settings.address, countValue, &values) != 0;
    const qint64 tookMs = timer.elapsed();
    m_exchanges = traced.exchanges();
    printExchanges(m_exchanges);
    print(QStringLiteral("query"),
          QStringLiteral("%1 values, %2 requests, %3 ms").arg(values).arg(m_exchanges.size()).arg(tookMs));
    return hasAnswered
               ? Finding::Healthy
               : diagnosis::judge(m_exchanges, m_settings.address, m_settings.timeoutMs, isConnected());
}

void UnitCheck::printExchanges(const Exchanges& exchanges)
{
    for (const Exchange& exchange : exchanges) {
        print(QStringLiteral("request"), QString::fromLatin1(exchange.request.toHex(' ')));
        QString label = QStringLiteral("answer");
        for (int i = 0; i < exchange.answer.size(); i += bytesPerRow) {
            print(label, QString::fromLatin1(exchange.answer.mid(i, bytesPerRow).toHex(' ')));
            label.clear();
        }
        print(exchange.answer.isEmpty() ? label : QString(),
              exchange.answer.isEmpty()
                  ? QStringLiteral("nothing in %1 ms").arg(exchange.tookMs)
                  : QStringLiteral("%1 bytes after %2 ms").arg(exchange.answer.size()).arg(exchange.tookMs));
    }
}

void UnitCheck::print(const QString& label, const QString& text)
{
    m_output.write(QString(QStringLiteral("  ") + label.leftJustified(9) + text).toUtf8());
}
