#include "scriptedunit.h"

#include "eventtype.h"

ScriptedUnit::~ScriptedUnit()
{
    wait();
    delete view;
}

int ScriptedUnit::control(int id, QString value)
{
    controls += QStringLiteral("%1=%2").arg(QString::number(id), value);
    return 1;
}

QStringList ScriptedUnit::changeLogData(DataMap)
{
    return {{}, {}, {}, {}, {}, {}, {}, QStringLiteral("12.0/33.6/7.0"), {}, QStringLiteral("Load on other")};
}

CollectView* ScriptedUnit::getView()
{
    if (!view) {
        view = new ScriptedView;
        connect(view.data(), &CollectView::postDEvent, this, &CollectThread::postDEvent);
    }
    return view;
}

void ScriptedUnit::loadConfig()
{
    msleep(static_cast<unsigned long>(configMs));
}

void ScriptedUnit::answer(const DataMap& data)
{
    m_failureCount = 0;
    if (m_commState != 0)
        report(EventType::Communicating, {});
    m_commState = 0;
    m_last = data;
    report(EventType::Data, data);
}

void ScriptedUnit::beSilent()
{
    ++m_failureCount;
    report(EventType::Data, m_last);
}

void ScriptedUnit::run()
{
    while (!isInterruptionRequested()) {
        msleep(static_cast<unsigned long>(cycleMs));
        if (isDark)
            beSilent();
        else
            answer({{4250, 1}});
    }
}

void ScriptedUnit::report(int type, const DataMap& data)
{
    emit postDEvent(type, {{QStringLiteral("timeStr"), QStringLiteral("2024-03-05 07:08:09")},
                           {QStringLiteral("data"), QVariant::fromValue(data)}});
}
