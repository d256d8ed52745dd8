#pragma once

#include "portsettings.h"

#include <termios.h>

// The rules by which settings become terminal attributes, without a device. Each function takes one value
// over into the settings in force and the attributes, or refuses it and leaves both alone.

namespace lineformat {
/// What became of one value, and the warnings to write where the port is open.
struct Outcome
{
    bool taken = true;
    const char* warnings[2] = {};
};

Outcome setBaudRate(PortSettings& inForce, termios& attributes, BaudRateType baudRate);
Outcome setDataBits(PortSettings& inForce, termios& attributes, DataBitsType dataBits);
/// Space parity is emulated by one data bit more, which then is the setting in force.
Outcome setParity(PortSettings& inForce, termios& attributes, ParityType parity);
Outcome setStopBits(PortSettings& inForce, termios& attributes, StopBitsType stopBits);
Outcome setFlowControl(PortSettings& inForce, termios& attributes, FlowType flow);
Outcome setTimeout(PortSettings& inForce, termios& attributes, qint64 timeoutMs);

/// Bytes pass as they are and a read returns what is there.
void setRaw(termios& attributes);
} // namespace lineformat
