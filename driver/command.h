#pragma once

#include "request.h"

#include <optional>

namespace driver {

/// The longest command text that a caller sends; it cuts longer ones there.
constexpr int maxCommandLength = 49;

/// The registers that a command text asks to be written, or nothing when it is refused. A text is
///   "point,value"  with a point from 3000 up: a setting. The value is the raw integer; for a text row it is
///                  the text, for the system time it is "yy,MM,dd,hh,mm,ss"; or
///   "code,argument" with a code of unitmap::commandRows, the argument being a number or empty.
/// Refused: null, points that are not settings, unknown codes, values that do not fit the registers.
std::optional<RegisterWrite> parseCommand(const char* command);

/// Whether what parseCommand() returned asks for the history.
bool isHistoryDownload(const RegisterWrite& write);

} // namespace driver
