#pragma once

#include "portsettings.h"

#include <termios.h>

/// What a speed becomes on the line.
struct LineSpeed
{
    BaudRateType inForce; ///< itself or its substitute
    speed_t speed;        ///< of the line; KeepSpeed leaves it as it was
    const char* warnings[2];
};

constexpr speed_t KeepSpeed = ~speed_t{0};

// Indexed by BaudRateType. The texts are a contract, as is the gap at 56000: stored, the line left as it was,
// without a warning.
// clang-format off
static constexpr LineSpeed lineSpeeds[] = {
    {Baud50,     B50,       {"Posix_QextSerialPort Portability Warning: Windows does not support 50 baud operation."}},
    {Baud75,     B75,       {"Posix_QextSerialPort Portability Warning: Windows does not support 75 baud operation."}},
    {Baud110,    B110,      {}},
    {Baud134,    B134,      {"Posix_QextSerialPort Portability Warning: Windows does not support 134.5 baud operation."}},
    {Baud150,    B150,      {"Posix_QextSerialPort Portability Warning: Windows does not support 150 baud operation."}},
    {Baud200,    B200,      {"Posix_QextSerialPort Portability Warning: Windows does not support 200 baud operation."}},
    {Baud300,    B300,      {}},
    {Baud600,    B600,      {}},
    {Baud1200,   B1200,     {}},
    {Baud1800,   B1800,     {"Posix_QextSerialPort Portability Warning: Windows and IRIX do not support 1800 baud operation."}},
    {Baud2400,   B2400,     {}},
    {Baud4800,   B4800,     {}},
    {Baud9600,   B9600,     {}},
    {Baud9600,   B9600,     {"Posix_QextSerialPort: POSIX does not support 14400 baud operation.  Switching to 9600 baud."}},
    {Baud19200,  B19200,    {}},
    {Baud38400,  B38400,    {}},
    {Baud56000,  KeepSpeed, {}},
    {Baud57600,  B57600,    {}},
    {Baud57600,  B57600,    {"Posix_QextSerialPort Portability Warning: Windows and some POSIX systems do not support 76800 baud operation.",
                             "Posix_QextSerialPort: Posix_QextSerialPort was compiled without 76800 baud support.  Switching to 57600 baud."}},
    {Baud115200, B115200,   {}},
    {Baud115200, B115200,   {"Posix_QextSerialPort: POSIX does not support 128000 baud operation.  Switching to 115200 baud."}},
    {Baud115200, B115200,   {"Posix_QextSerialPort: POSIX does not support 256000 baud operation.  Switching to 115200 baud."}},
};
// clang-format on

constexpr int LineSpeedCount = sizeof lineSpeeds / sizeof lineSpeeds[0];
static_assert(LineSpeedCount == Baud256000 + 1, "one row per speed");
