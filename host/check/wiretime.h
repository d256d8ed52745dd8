#pragma once

#include "exchange.h"
#include "portsettings.h"

/// How long frames take on a serial line. Pure functions.
namespace wiretime {

/// Speed of a line, in baud; 0 for a setting that leaves the line as it was.
int baudOf(BaudRateType rate);

/// Bits of one character: start, data, parity and stop bits.
int bitsPerCharacter(const PortSettings& settings);

/// The time of all frames of a query with the silence of 3.5 characters that ends each, in ms: no poll can
/// be shorter. 0 when the speed is unknown.
double queryMs(const Exchanges& exchanges, const PortSettings& settings);

} // namespace wiretime
