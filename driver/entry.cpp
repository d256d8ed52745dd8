#include "entry.h"

#include "command.h"
#include "decode.h"
#include "historyfetch.h"
#include "historyfile.h"
#include "transaction.h"

#include <array>
#include <optional>

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

ControlResult resultOf(const History& history)
{
    switch (history.result) {
    case FetchResult::LineFailed:
        return resultOf(history.lineError);
    case FetchResult::BadHistory:
        return BadReply;
    case FetchResult::Unsteady:
        return HistoryMoving;
    case FetchResult::Complete:
        break;
    }
    return Done;
}

/// The file comes first: when it cannot be written, the line is spared.
ControlResult downloadHistory(PortHandle& port, int address, const RegisterWrite& command)
{
    std::optional<HistoryFile> file = HistoryFile::create();
    if (!file)
        return FileNotWritten;
    Transaction transaction(port);
    const ReplyError error = transaction.run(writeRequest(address, command));
    if (error != ReplyError::None)
        return resultOf(error);
    const History history = fetchHistory(transaction, address);
    if (history.result != FetchResult::Complete)
        return resultOf(history);
    return file->publish(history.records) ? Done : FileNotWritten;
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
    if (isHistoryDownload(*write))
        return downloadHistory(*port, address, *write);
    return resultOf(Transaction(*port).run(writeRequest(address, *write)));
}
