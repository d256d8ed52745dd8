#pragma once

struct PortHandle;

/// One transfer over a port: the handle, a byte buffer and its length; returns the count or a negative error.
using PortEntry = int (*)(PortHandle* handle, char* buffer, int length);

/// What a driver library gets for one call: exactly three pointers in this order. Built on the caller's
/// stack, valid for the call only.
struct PortHandle
{
    void* device = nullptr;         ///< the open QIODevice, or null
    PortEntry readEntry = nullptr;  ///< CommRead or TcpCommRead
    PortEntry writeEntry = nullptr; ///< CommWrite or TcpCommWrite
};
