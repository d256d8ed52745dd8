#pragma once

#include "modbushelpers.h" // VEK5_DRIVER_API
#include "porthandle.h"

// The ways in which a driver library reaches its unit. All run in the thread that calls the driver and keep
// no state; a device serves one caller at a time. The serial caller holds the port's lock for the whole
// driver call, the socket belongs to the calling thread.

extern "C" {

/// Reads through the read hook of the handle's QIODevice, past its buffer: the count, or -1, also for a null
/// handle, device or buffer.
VEK5_DRIVER_API int CommRead(PortHandle* handle, char* buffer, int length);

/// Writes through the write hook of the handle's QIODevice: the count, or -1, also for a null handle, device
/// or buffer.
VEK5_DRIVER_API int CommWrite(PortHandle* handle, char* buffer, int length);

// Looked up by driver libraries, which pass arguments of their own: they do nothing.
VEK5_DRIVER_API int CommOpen();
VEK5_DRIVER_API void CommAccept();
VEK5_DRIVER_API void CommControl();
VEK5_DRIVER_API void CommClose();
}

// C++ linkage, deliberate: drivers reach the two by the handle only.

/// Waits up to 1000 ms for a Modbus TCP answer and gives it as a Modbus RTU frame with its CRC. Returns the
/// frame's length, 3 to 996; -5 for fewer than 7 bytes or a null handle, device or buffer, with the buffer
/// untouched. length is ignored: the buffer must hold 996 bytes. An answer that arrives in pieces yields a
/// short frame with a good CRC.
VEK5_DRIVER_API int TcpCommRead(PortHandle* handle, char* buffer, int length);

/// Sends a Modbus RTU frame of length bytes, CRC included, as Modbus TCP. Returns length; -1 for a null
/// handle, device or frame, a length under 0 or over 996, and when not all could be written.
VEK5_DRIVER_API int TcpCommWrite(PortHandle* handle, char* frame, int length);
