#include "replycheck.h"

#include "modbushelpers.h"

#include <algorithm>

namespace driver {

namespace {

constexpr unsigned char exceptionFlag = 0x80;

// Reply to function 6:  unit id, function, register (2 bytes), value (2), CRC (2): the request itself
// Reply to function 16: unit id, function, first register (2), count (2), CRC (2): the request's first bytes
ReplyError checkEcho(const Request& request, const unsigned char* reply)
{
    constexpr int echoedLength = 6;
    return std::equal(reply, reply + echoedLength, request.frame.data()) ? ReplyError::None
                                                                         : ReplyError::BadEcho;
}

} // namespace

bool isExceptionTo(const Request& request, const unsigned char* reply)
{
    return reply[1] == (request.frame[1] | exceptionFlag);
}

// Reply to a read: unit id, function, byte count, that many bytes, CRC (2)
ReplyError checkReply(const Request& request, const unsigned char* reply, int length)
{
    if (checkModbufCRC(reply, length) != 0)
        return ReplyError::BadCrc;
    if (reply[0] != request.frame[0])
        return ReplyError::WrongUnit;
    if (isExceptionTo(request, reply))
        return length == exceptionLength ? ReplyError::Exception : ReplyError::BadLength;
    if (length != request.replyLength)
        return ReplyError::BadLength;
    if (reply[1] != request.frame[1])
        return ReplyError::WrongFunction;
    switch (static_cast<unitmap::Function>(request.frame[1])) {
    case unitmap::WriteSingleRegister:
    case unitmap::WriteMultipleRegisters:
        return checkEcho(request, reply);
    case unitmap::ReadDiscreteInputs:
    case unitmap::ReadHoldingRegisters:
    case unitmap::ReadInputRegisters:
        break;
    }
    return reply[2] == length - 5 ? ReplyError::None : ReplyError::BadByteCount;
}

} // namespace driver
