#pragma once

#include "porthandle.h"

#if defined(__GNUC__)
#define VEK5_DRIVER_ENTRY extern "C" __attribute__((visibility("default")))
#else
#define VEK5_DRIVER_ENTRY extern "C"
#endif

namespace driver {

/// Takes one value; runs inside Query, on its thread.
using PointCallback = void (*)(int point, float value, void* context);

/// Results of Control. Anything but Done means that the unit may not have acted.
enum ControlResult : int
{
    Done = 0,
    Refused = -1,        ///< not a command for this unit, or no port to send it over: nothing was sent
    NotSent = -2,        ///< the port did not take the request
    NoAnswer = -3,       ///< sent, but nothing came back
    BadReply = -4,       ///< sent, but what came back was damaged or not the reply to it
    Rejected = -5,       ///< the unit itself refused: unknown register, bad value or not now
    FileNotWritten = -6, ///< "./history.txt" cannot be written: see the folder's permissions and free space
    HistoryMoving = -7   ///< the unit kept losing records to newer ones while its history was read
};

} // namespace driver

// The two entries that the plugin looks up by name. Both may run in many threads at once, one per port.

/// Reads everything from the unit at `address` (1-255), then reports each point through the callback with
/// `context`, in the order of unitmap::blocks. Returns 1; 0 when any part could not be read, then nothing has
/// been reported.
VEK5_DRIVER_ENTRY int Query(PortHandle* port, int address, driver::PointCallback callback, void* context);

/// Carries out one command text (see driver::parseCommand) on the unit at `address` (1-255). Address 0 is
/// refused: on a shared line every unit would act. Returns a driver::ControlResult; `context` is not used.
/// "Download the history" also reads it, which takes about 20 s for 1000 records at 9600 baud and at most
/// five minutes, and leaves it in "./history.txt"; only then is the result Done. The file there before is
/// replaced when the new one is complete, and kept when anything fails.
VEK5_DRIVER_ENTRY int Control(PortHandle* port, int address, const char* command, void* context);
