#pragma once

#include "failure.h"
#include "processors.h"
#include "simulatorprocess.h"

#include <memory>

/// Simulated units on the processor that is theirs, ready when the constructor returns.
class UnitSimulator
{
public:
    explicit UnitSimulator(const QStringList& arguments)
    {
        const OnProcessor unit(Role::Unit);
        m_process = std::make_unique<Simulator>(
            QStringList{QStringLiteral("--scenario"), QStringLiteral("none")} + arguments);
        if (!m_process->waitReady("\n"))
            fail(QStringLiteral("the simulated units do not start: %1")
                     .arg(QString::fromLocal8Bit(m_process->errors())));
    }

    int port() const { return m_process->port(); }

private:
    std::unique_ptr<Simulator> m_process;
};
