#pragma once

#include "portsettings.h"

#include <QString>

enum class SettingsError
{
    None,
    Empty,
    Form,
    Parity,
    DataBits,
    StopBits
};

struct ParsedSettings
{
    SettingsError error = SettingsError::None;
    PortSettings settings; ///< flow control off, timeout left at its default; meaningless after an error
};

/// Reads a settings text: "9600,n,8,1" (an unknown baud number is 50 baud) or "12#3#0#0" (the enumerations'
/// numbers, taken unchecked). Parts after the fourth are ignored.
ParsedSettings parseSettings(const QString& text);
