#include "entry.h"

#include "command.h"
#include "decode.h"
#include "transaction.h"

#include <array>

using namespace driver;

namespace {

constexpr int pointCount =
    unitmap::alarmPointCount + unitmap::inputRegisterCount + unitmap::holdingRegisterCount;

bool isUsable(const PortHandle* port, int address)
{
    return port && port->device && port->readEntry && port->writeEntry && address >= 1 && address <= 255;
}

ControlResult resultOf(ReplyError error)
{
    switch (error) {
    case ReplyError::None:
        return Done;
    case ReplyError::NotSent:
        return NotSent;
    case ReplyError::NoAnswer:
        return NoAnswer;
    case ReplyError::Exception:
        return Rejected;
    case ReplyError::BadCrc:
    case ReplyError::WrongUnit:
    case ReplyError::BadLength:
    case ReplyError::WrongFunction:
    case ReplyError::BadByteCount:
    case ReplyError::BadEcho:
        break;
    }
    return BadReply;
}

} // namespace

int Query(PortHandle* port, int address, PointCallback callback, void* context)
{
    if (!isUsable(port, address) || !callback)
        return 0;
    std::array<PointValue, pointCount> values;
    PointValue* end = values.data();
    Transaction transaction(*port);
    for (const unitmap::Block& block : unitmap::blocks) {
        if (transaction.run(readRequest(address, block)) != ReplyError::None)
            return 0;
        end = decodeBlock(block, transaction.reply(), end);
    }
    // Only now, so that a reader never sees new values of one block beside old ones of another.
    for (const PointValue* value = values.data(); value != end; ++value)
        callback(value->point, value->value, context);
    return 1;
}

int Control(PortHandle* port, int address, const char* command, void* /*context*/)
{
    if (!isUsable(port, address))
        return Refused;
    const std::optional<RegisterWrite> write = parseCommand(command);
    if (!write)
        return Refused;
    return resultOf(Transaction(*port).run(writeRequest(address, *write)));
}
