#pragma once

#include "exchange.h"
#include "porthandle.h"

#include <QElapsedTimer>

#include <functional>

/// A port handle that passes everything through to another and keeps the exchanges that it saw. For one
/// driver call; the thread of that call.
///
/// A driver cannot be called back: once isStopped tells so, nothing is written and nothing comes any more, so
/// that it gives up after the read that runs.
class TracedPort : private PortHandle
{
public:
    /// The entries are called with a handle of the same device.
    TracedPort(const PortHandle& port, std::function<bool()> isStopped);

    /// What a driver is given.
    PortHandle* handle() { return this; }
    const Exchanges& exchanges() const { return m_exchanges; }

private:
    static int readTraced(PortHandle* handle, char* buffer, int length);
    static int writeTraced(PortHandle* handle, char* buffer, int length);

    PortHandle m_port;
    const std::function<bool()> m_isStopped;
    Exchanges m_exchanges;
    QElapsedTimer m_sinceRequest;
};
