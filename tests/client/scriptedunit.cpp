#include "scriptedunit.h"

#include "vek5client.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QtTest>

ScriptedUnit& scriptedUnit()
{
    static ScriptedUnit unit;
    return unit;
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
    ScriptedUnit& unit = scriptedUnit();
    if (unit.onControl)
        unit.onControl(command);
    else
        unit.commands << QByteArray(command);
    return unit.controlResult;
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
    for (const SeenEvent& event : m_events) {
        if (withData || event.type != 2007)
            types << event.type;
    }
    return types;
}

const SeenEvent& EventLog::last(int type) const
{
    for (int i = m_events.size() - 1; i >= 0; --i) {
        if (m_events.at(i).type == type)
            return m_events.at(i);
    }
    static const SeenEvent none{0, {}};
    return none;
}

void writeConfig(const QString& unitName, const QStringList& lines)
{
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/PVMX/drovaPanel/db");
    QVERIFY(QDir().mkpath(folder));
    QFile file(folder + QStringLiteral("/dev.ini"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    // QSettings takes a file of the same size and time for the one it knows: each gets a size of its own.
    static QByteArray filler("\n;");
    filler += '-';
    file.write(QString(QLatin1Char('[') + unitName + QStringLiteral("]\n") + lines.join(QLatin1Char('\n')))
                   .toUtf8() +
               filler);
}
