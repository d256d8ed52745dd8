#pragma once

#include "request.h"

namespace driver {

/// How a request ended, in the order in which it is found out.
enum class ReplyError
{
    None,
    NotSent,       ///< the port did not take the request
    NoAnswer,      ///< not one byte came
    BadCrc,        ///< also a frame that is too short to hold a CRC
    WrongUnit,     ///< another unit answered
    Exception,     ///< the unit itself refused the request
    BadLength,     ///< truncated, over-long, or the reply to another request
    WrongFunction, ///< the reply to another request
    BadByteCount,  ///< the frame contradicts itself
    BadEcho        ///< a write was acknowledged for other registers or with another value
};

/// Length of an exception reply: unit id, function with its top bit set, exception code, CRC.
constexpr int exceptionLength = 5;

/// Whether the first two bytes of a reply begin an exception to this request.
bool isExceptionTo(const Request& request, const unsigned char* reply);

/// Judges a reply of `length` bytes (at least 1) against the request; None means that its data may be used.
/// Over TCP the CRC always fits, since the port access computes it: length, function and byte count are what
/// protects there.
ReplyError checkReply(const Request& request, const unsigned char* reply, int length);

} // namespace driver
