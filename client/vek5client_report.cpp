#include "vek5client.h"

#include "alarmchanges.h"
#include "eventrecord.h"
#include "pointvalue.h"

void vek5Client::reportData()
{
    // One record serves the whole report and keeps every key it was given: hosts read only the keys of an
    // event's own type.
    QMap<QString, QVariant> record = eventrecord::begin(m_deviceName, m_protocol, m_portName);
    record.insert(QStringLiteral("lost"), 0);

    const bool hasAppeared = reportAlarms(record);
    reportStatusPoint(record, 2022, eventrecord::Status2022);
    reportStatusPoint(record, 2368, eventrecord::Status2368);

    record.insert(QStringLiteral("data"), QVariant::fromValue(m_points.map()));
    emit postDEvent(eventrecord::Data, record);
    refreshDeviceInfo();

    if (hasAppeared) {
        record.insert(QStringLiteral("dis_alarm"), 1);
        record.insert(QStringLiteral("state"), m_commState);
        emit postDEvent(eventrecord::Summary, record);
    }
}

// Returns whether an alarm appeared.
bool vek5Client::reportAlarms(QMap<QString, QVariant>& record)
{
    const int alarmCount = getEventLogDesc().size() / 2;
    bool hasAppeared = false;
    const auto changes = alarmchanges::between(m_previousAlarmStates, m_points.map(), alarmCount);
    QVariant* code = nullptr;
    QVariant* state = nullptr;
    for (const alarmchanges::Change& change : changes) {
        hasAppeared = hasAppeared || alarmchanges::isAppearance(change);
        // The two entries are looked up again only where a host has kept the record, which then is another.
        if (!code || !record.isDetached()) {
            code = &record[QStringLiteral("alarmId")];
            state = &record[QStringLiteral("alarmState")];
        }
        *code = alarmchanges::eventCode(change, alarmCount);
        *state = change.state;
        emit postDEvent(eventrecord::AlarmChanged, record);
        m_previousAlarmStates.insert(change.index, change.state);
    }
    return hasAppeared;
}

// Points 2022 and 2368 are alarms 22 and 368 as well, so both kinds of event tell of them. Their states are
// kept under the point's id, the alarms' under the alarm's index.
void vek5Client::reportStatusPoint(QMap<QString, QVariant>& record, int pointId, int eventType)
{
    const int state = pointvalue::intAt(m_points.map(), pointId);
    const auto previous = m_previousAlarmStates.constFind(pointId);
    if (state == (previous == m_previousAlarmStates.constEnd() ? 0 : previous.value()))
        return;
    record.insert(QStringLiteral("alarmState"), state);
    emit postDEvent(eventType, record);
    m_previousAlarmStates.insert(pointId, state);
}

void vek5Client::refreshDeviceInfo()
{
    const QMap<int, QVariant>& data = m_points.map();
    const QString portInfo =
        m_commType == 1
            ? QString(QStringLiteral("tcp:") + m_ipAddress + QLatin1Char(':') + QString::number(m_tcpPort))
            : QString(m_portName + QLatin1Char('-') + m_portSettings);

    const QMutexLocker locker(&m_infoLock);
    m_infoUpdate.updatePoints(m_deviceInfo, data);
    DeviceInfo::update(m_deviceInfo, QStringLiteral("IdentManufacturer"), m_manufacturer);
    DeviceInfo::update(m_deviceInfo, QStringLiteral("name"), m_deviceName);
    DeviceInfo::update(m_deviceInfo, QStringLiteral("upsIdentModel"), identity::modelOf(data));
    DeviceInfo::update(m_deviceInfo, QStringLiteral("portInfo"), portInfo);
    DeviceInfo::update(m_deviceInfo, QStringLiteral("state"), m_commState);
    DeviceInfo::update(m_deviceInfo, QStringLiteral("upsAddr"), QString::number(m_deviceAddress));
    DeviceInfo::update(m_deviceInfo, QStringLiteral("upsLoad"), pointvalue::intAt(data, 4184));
}
