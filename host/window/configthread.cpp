#include "configthread.h"

#include "unitsession.h"

void ConfigThread::run()
{
    for (UnitSession* unit : m_units) {
        if (isInterruptionRequested())
            return;
        unit->loadConfig();
    }
}
