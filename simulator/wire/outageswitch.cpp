#include "outageswitch.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <system_error>

namespace simulation {

OutageSwitch::OutageSwitch()
    : m_notice(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_notice.isOpen())
        throw std::system_error(errno, std::generic_category(), "cannot set up a transport");
}

void OutageSwitch::set(const Outage& outage, Time now)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_state = outage.state;
        m_end.reset();
        if (outage.state != LineState::Up && outage.duration.count() > 0)
            m_end = now + outage.duration;
    }
    ::eventfd_write(m_notice.get(), 1);
}

LineState OutageSwitch::state(Time now)
{
    eventfd_t ignored = 0;
    ::eventfd_read(m_notice.get(), &ignored);
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_end && now >= *m_end) {
        m_state = LineState::Up;
        m_end.reset();
    }
    return m_state;
}

std::optional<OutageSwitch::Time> OutageSwitch::end() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_end;
}

} // namespace simulation
