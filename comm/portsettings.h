#pragma once

#include <QtGlobal>

// The enumerators' numbers are a contract: settings texts of the form "12#3#0#0" name them directly. The
// underlying type is fixed so that any number out of such a text can be held, and refused later.

/// Line speed; the number in a name is the speed in baud (134 stands for 134.5).
enum BaudRateType : int
{
    Baud50,
    Baud75,
    Baud110,
    Baud134,
    Baud150,
    Baud200,
    Baud300,
    Baud600,
    Baud1200,
    Baud1800,
    Baud2400,
    Baud4800,
    Baud9600,
    Baud14400,
    Baud19200,
    Baud38400,
    Baud56000,
    Baud57600,
    Baud76800,
    Baud115200,
    Baud128000,
    Baud256000
};

enum DataBitsType : int
{
    DataBits5,
    DataBits6,
    DataBits7,
    DataBits8
};

enum ParityType : int
{
    ParityNone,
    ParityOdd,
    ParityEven,
    ParitySpace,
    ParityMark
};

/// Two comes before one and a half, deliberately: settings texts map "1" and "2" to 0 and 1.
enum StopBitsType : int
{
    StopBits1,
    StopBits2,
    StopBits1_5
};

enum FlowType : int
{
    FlowOff,
    FlowHardware,
    FlowXonXoff
};

/// One serial line's settings. A value out of an enumeration's range leaves that property of the line alone.
struct PortSettings
{
    BaudRateType BaudRate = Baud9600;
    DataBitsType DataBits = DataBits8;
    ParityType Parity = ParityNone;
    StopBitsType StopBits = StopBits1;
    FlowType FlowControl = FlowOff;
    /// How long a read waits for the next byte, ms; in force in steps of 100 up to 25500.
    qint64 Timeout = 1000;
    // The same, split.
    qint64 TimeoutSeconds = 1;
    qint64 TimeoutRestMs = 0;
};
