#include "endpoint.h"

#include "simulatedunit.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <system_error>

namespace simulation {

namespace {

bool isServed(int function)
{
    switch (function) {
    case unitmap::ReadDiscreteInputs:
    case unitmap::ReadHoldingRegisters:
    case unitmap::ReadInputRegisters:
    case unitmap::WriteSingleRegister:
    case unitmap::WriteMultipleRegisters:
        return true;
    default:
        return false;
    }
}

Bytes readAvailable(int socket)
{
    std::array<std::uint8_t, MODBUS_MAX_ADU_LENGTH> buffer{};
    const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
    return count > 0 ? Bytes(buffer.begin(), buffer.begin() + count) : Bytes();
}

void dropAvailable(int socket)
{
    while (!readAvailable(socket).empty()) {
    }
}

} // namespace

Endpoint::Endpoint(Framing framing, SimulatedUnit& unit)
    : m_framing(framing)
    , m_unit(unit)
    , m_context(framing == Framing::Rtu ? modbus_new_rtu("unused", 9600, 'N', 8, 1)
                                        : modbus_new_tcp("127.0.0.1", 0))
{
    int ends[2] = {-1, -1};
    if (!m_context || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot set up a unit");
    m_unitEnd = FileDescriptor(ends[0]);
    m_lineEnd = FileDescriptor(ends[1]);
    modbus_set_slave(m_context.get(), unit.address());
    modbus_set_socket(m_context.get(), m_unitEnd.get());
    // A request is there as a whole before libmodbus looks: it need not wait for more, nor pause before it
    // refuses one.
    modbus_set_byte_timeout(m_context.get(), 0, 1000);
    modbus_set_response_timeout(m_context.get(), 0, 1);
}

bool Endpoint::isMeantAlone(const Bytes& request)
{
    return isWhole(request) && addressIn(request) == m_unit.address() && isIntact(request);
}

Bytes Endpoint::answer(const Bytes& request)
{
    if (!isWhole(request))
        return {};
    const int address = addressIn(request);
    const bool isBroadcast = m_framing == Framing::Rtu && address == MODBUS_BROADCAST_ADDRESS;
    if ((address != m_unit.address() && !isBroadcast) || !isIntact(request))
        return {};

    const int header = static_cast<int>(addressOffset(m_framing)) + 1;
    std::array<std::uint8_t, MODBUS_MAX_ADU_LENGTH> received{};
    const auto requestSize = static_cast<ssize_t>(request.size());
    if (!isServed(request[static_cast<std::size_t>(header)]))
        modbus_reply_exception(m_context.get(), request.data(), MODBUS_EXCEPTION_ILLEGAL_FUNCTION);
    else if (::send(m_lineEnd.get(), request.data(), request.size(), MSG_NOSIGNAL) != requestSize ||
             modbus_receive(m_context.get(), received.data()) != requestSize)
        modbus_reply_exception(m_context.get(), request.data(), MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE);
    else
        m_unit.reply(m_context.get(), request, header);
    dropAvailable(m_unitEnd.get());
    const Bytes reply = takeSent();
    return isBroadcast ? Bytes() : reply;
}

/// Whether address and function are there, and no more than a request can be.
bool Endpoint::isWhole(const Bytes& request) const
{
    return request.size() >= addressOffset(m_framing) + 2 && request.size() <= MODBUS_MAX_ADU_LENGTH;
}

int Endpoint::addressIn(const Bytes& request) const
{
    return request[addressOffset(m_framing)];
}

/// Whether the checksum of a serial frame is right, whatever its function: libmodbus knows the length of its
/// own functions only, so it is asked to send the same bytes anew. TCP has seen to that already.
bool Endpoint::isIntact(const Bytes& request)
{
    if (m_framing == Framing::Tcp)
        return true;
    const int unsummed = static_cast<int>(request.size()) - 2;
    if (unsummed < 2)
        return false;
    modbus_send_raw_request(m_context.get(), request.data(), unsummed);
    return takeSent() == request;
}

/// What libmodbus has just sent.
Bytes Endpoint::takeSent()
{
    return readAvailable(m_lineEnd.get());
}

} // namespace simulation
