#pragma once

#include "text.h"

#include <QProcess>
#include <QStringList>

#include <csignal>

inline constexpr int patienceMs = 20000;

/// A running ups-sim, killed at the end if it is still there.
class Simulator
{
public:
    explicit Simulator(const QStringList& arguments, const QString& folder = QString())
    {
        m_process.setWorkingDirectory(folder);
        m_process.start(QStringLiteral(RUN_DIR "/ups-sim"), arguments);
    }
    ~Simulator()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// Waits for the line that tells a transport is ready; its last word is the link or the address and port.
    bool waitReady(const char* text)
    {
        while (!m_output.contains(text) && m_process.waitForReadyRead(patienceMs))
            m_output += m_process.readAllStandardOutput();
        return m_output.contains(text);
    }
    int port() const { return m_output.mid(m_output.indexOf("127.0.0.1:") + 10).split('\n').first().toInt(); }
    int exitCode()
    {
        m_process.waitForFinished(patienceMs);
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    QByteArray errors() { return m_process.readAllStandardError(); }
    void signal(int number) { ::kill(pid_t(m_process.processId()), number); }

private:
    QProcess m_process;
    QByteArray m_output;
};
