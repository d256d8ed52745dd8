#include "vek5client.h"

#include "eventrecord.h"
#include "portmanage.h"

#include <QtDebug>

int vek5Client::control(int id, QString value)
{
    const QMutexLocker locker(&m_commandLock);
    m_commands.append({id, value});
    return 1;
}

int vek5Client::commandCount()
{
    const QMutexLocker locker(&m_commandLock);
    return m_commands.size();
}

std::optional<ControlCmd> vek5Client::takeCommand()
{
    const QMutexLocker locker(&m_commandLock);
    return m_commands.isEmpty() ? std::nullopt : std::optional<ControlCmd>(m_commands.takeFirst());
}

void vek5Client::check_set_command()
{
    // Only those that wait now: what a slot queues meanwhile runs in the next cycle.
    for (int remaining = commandCount(); remaining > 0; --remaining) {
        const std::optional<ControlCmd> taken = takeCommand();
        if (!taken)
            return;
        const ControlCmd& command = *taken;
        if (command.id == controlcommands::ClosePort) {
            if (PortManage* manager = portManager())
                manager->Close(m_portName);
            return; // the rest waits for the next cycle, which opens the port again
        }
        if (command.id == controlcommands::DownloadHistory)
            downloadHistory(command);
        else
            runCommand(command);
    }
}

std::optional<int> vek5Client::runCommand(const ControlCmd& command)
{
    const std::optional<int> result = sendCommand(command);
    if (result)
        qDebug("control %d result %d", command.id, *result);
    else
        qDebug("control %d not sent", command.id);
    return result;
}

void vek5Client::downloadHistory(const ControlCmd& command)
{
    // All units' drivers write the same file. The lock is taken before the port's and nowhere else.
    static QMutex historyFileLock;
    QMutexLocker locker(&historyFileLock);
    const std::optional<int> result = runCommand(command);
    exportHistoryInfo(command.value);
    locker.unlock();
    reportDownload(command, result == 0 ? 0 : 1);
}

// The driver's result; nothing when there was nothing to send or no way to send it.
std::optional<int> vek5Client::sendCommand(const ControlCmd& command)
{
    const DriverControl driverControl = m_driver ? m_driver->control() : nullptr;
    const std::optional<QByteArray> text = controlcommands::driverText(command);
    if (!driverControl || !text)
        return std::nullopt;
    return callDriver([&](PortHandle* handle) {
        return driverControl(handle, m_deviceAddress, text->constData(), &m_driverContext);
    });
}

void vek5Client::reportDownload(const ControlCmd& command, int resultIndex)
{
    const QString results[] = {tr("successful"), tr("failed")};
    QMap<QString, QVariant> record;
    record.insert(QStringLiteral("controlId"), command.id);
    record.insert(QStringLiteral("controlValue"), command.value);
    record.insert(QStringLiteral("name"), m_deviceName);
    record.insert(QStringLiteral("result"), 1); // always 1: hosts take the outcome from "desc"
    record.insert(
        QStringLiteral("desc"),
        tr("%1 %2 %3").arg(m_deviceName, tr(controlcommands::nameOf(command.id)), results[resultIndex]));
    emit postDEvent(eventrecord::Downloaded, record);
}
