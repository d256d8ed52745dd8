#include "tracedport.h"

TracedPort::TracedPort(const PortHandle& port)
    : PortHandle{port.device, readTraced, writeTraced}
    , m_port(port)
{}

int TracedPort::readTraced(PortHandle* handle, char* buffer, int length)
{
    auto* self = static_cast<TracedPort*>(handle);
    const int count = self->m_port.readEntry(&self->m_port, buffer, length);
    if (!self->m_exchanges.isEmpty()) {
        Exchange& exchange = self->m_exchanges.last();
        // Time that only waited for silence behind an answer is none of the answer's.
        if (count > 0 || exchange.answer.isEmpty())
            exchange.tookMs = self->m_sinceRequest.elapsed();
        if (count > 0)
            exchange.answer.append(buffer, count);
    }
    return count;
}

int TracedPort::writeTraced(PortHandle* handle, char* buffer, int length)
{
    auto* self = static_cast<TracedPort*>(handle);
    self->m_exchanges.append({QByteArray(buffer, length), {}, 0});
    self->m_sinceRequest.start();
    return self->m_port.writeEntry(&self->m_port, buffer, length);
}
