#include "tracedport.h"

TracedPort::TracedPort(const PortHandle& port, std::function<bool()> isStopped)
    : PortHandle{port.device, readTraced, writeTraced}
    , m_port(port)
    , m_isStopped(std::move(isStopped))
{}

int TracedPort::readTraced(PortHandle* handle, char* buffer, int length)
{
    auto* self = static_cast<TracedPort*>(handle);
    if (self->m_isStopped())
        return 0;
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
    if (self->m_isStopped())
        return -1;
    self->m_exchanges.append({QByteArray(buffer, length), {}, 0});
    self->m_sinceRequest.start();
    return self->m_port.writeEntry(&self->m_port, buffer, length);
}
