#include "scriptedunit.h"

#include "testfiles.h"
#include "vek5client.h"

#include <QCoreApplication>
#include <QDir>

#include <algorithm>

ScriptedUnit& scriptedUnit()
{
    static ScriptedUnit unit;
    return unit;
}

void ScriptedUnit::reset()
{
    answers = true;
    controlResult = 0;
    points.clear();
    hook = nullptr;
    queries = 0;
    commands.clear();
}

Q_DECL_EXPORT int scriptedQuery(PortHandle* handle, int, void (*callback)(int, float, void*), void* context)
{
    ScriptedUnit& unit = scriptedUnit();
    ++unit.queries;
    if (unit.hook)
        unit.hook(handle);
    if (!unit.answers)
        return 0;
    for (auto point = unit.points.constBegin(); point != unit.points.constEnd(); ++point)
        callback(point.key(), point.value(), context);
    return 1;
}

Q_DECL_EXPORT int scriptedControl(PortHandle*, int, const char* command, void*)
{
    scriptedUnit().commands << QByteArray(command);
    return scriptedUnit().controlResult;
}

EventLog::EventLog(vek5Client* collector)
{
    QObject::connect(
        collector, &CollectThread::postDEvent, collector,
        [this](int type, const QMap<QString, QVariant>& record) {
            m_events.append({type, record});
        },
        Qt::DirectConnection);
}

QVector<int> EventLog::types(bool withData) const
{
    QVector<int> types;
    for (const auto& event : m_events) {
        if (withData || event.first != 2007)
            types << event.first;
    }
    return types;
}

QVariantMap EventLog::last(int type) const
{
    const auto isOfType = [type](const auto& event) { return event.first == type; };
    const auto found = std::find_if(m_events.rbegin(), m_events.rend(), isOfType);
    return found == m_events.rend() ? QVariantMap() : found->second;
}

void writeConfig(const Text& unitName, const Text& lines)
{
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/PVMX/drovaPanel/db");
    QVERIFY(QDir().mkpath(folder));
    // QSettings takes a file of the same size and time for the one it knows: each gets a size of its own.
    static QByteArray filler("\n;");
    filler += '-';
    const QString text = QLatin1Char('[') + unitName + QStringLiteral("]\n") + lines;
    writeFile(folder + QStringLiteral("/dev.ini"), text.toUtf8() + filler);
}

void configure(vek5Client& collector, const Text& lines)
{
    writeConfig("A", lines);
    collector.m_deviceName = QStringLiteral("A");
    collector.loadConfig();
}
