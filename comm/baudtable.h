#pragma once

#include "portsettings.h"

/// A speed and the number that a settings text has for it.
struct BaudRow
{
    BaudRateType value;
    int baud;
};

// Ends in a row of zeros, which any other number reaches: it means 50 baud, deliberate.
// clang-format off
static constexpr BaudRow baudTable[] = {
    {Baud50,     50},
    {Baud75,     75},
    {Baud110,    110},
    {Baud134,    134},
    {Baud150,    150},
    {Baud200,    200},
    {Baud300,    300},
    {Baud600,    600},
    {Baud1200,   1200},
    {Baud1800,   1800},
    {Baud2400,   2400},
    {Baud4800,   4800},
    {Baud9600,   9600},
    {Baud14400,  14400},
    {Baud19200,  19200},
    {Baud38400,  38400},
    {Baud56000,  56000},
    {Baud57600,  57600},
    {Baud76800,  76800},
    {Baud115200, 115200},
    {Baud128000, 128000},
    {Baud256000, 256000},
    {Baud50,     0},
};
// clang-format on
