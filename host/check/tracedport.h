#pragma once

#include "exchange.h"
#include "porthandle.h"

#include <QElapsedTimer>

/// A port handle that passes everything through to another and keeps the exchanges that it saw. For one
/// driver call; the thread of that call.
class TracedPort : private PortHandle
{
public:
    /// The entries are called with a handle of the same device.
    explicit TracedPort(const PortHandle& port);

    /// What a driver is given.
    PortHandle* handle() { return this; }
    const Exchanges& exchanges() const { return m_exchanges; }

private:
    static int readTraced(PortHandle* handle, char* buffer, int length);
    static int writeTraced(PortHandle* handle, char* buffer, int length);

    PortHandle m_port;
    Exchanges m_exchanges;
    QElapsedTimer m_sinceRequest;
};
