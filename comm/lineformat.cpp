#include "lineformat.h"

#include "linespeeds.h"

#include <algorithm>

namespace {
using lineformat::Outcome;

constexpr char spaceWith8[] =
    "Posix_QextSerialPort:  Space parity is only supported in POSIX with 7 or fewer data bits";

// Indexed by DataBitsType.
constexpr tcflag_t characterSizes[] = {CS5, CS6, CS7, CS8};
constexpr const char* withOneAndAHalfStopBits[] = {
    nullptr, "Posix_QextSerialPort: 6 Data bits cannot be used with 1.5 stop bits.",
    "Posix_QextSerialPort: 7 Data bits cannot be used with 1.5 stop bits.",
    "Posix_QextSerialPort: 8 Data bits cannot be used with 1.5 stop bits."};

// Numbers out of a settings text may be anything.
constexpr char noSuchValue[] =
    "SerialPort: the settings hold a number that stands for nothing; the line keeps what it had. "
    "Check the port's param in serial.ini.";

bool isDataBits(int value)
{
    return value >= DataBits5 && value <= DataBits8;
}

Outcome refused(const char* warning)
{
    return {false, {warning}};
}

void put(tcflag_t& flags, tcflag_t mask, tcflag_t value)
{
    flags = (flags & ~mask) | value;
}
} // namespace

Outcome lineformat::setBaudRate(PortSettings& inForce, termios& attributes, BaudRateType baudRate)
{
    if (baudRate < 0 || baudRate >= LineSpeedCount)
        return refused(noSuchValue);
    const LineSpeed& row = lineSpeeds[baudRate];
    inForce.BaudRate = row.inForce;
    if (row.speed != KeepSpeed) {
        cfsetispeed(&attributes, row.speed);
        cfsetospeed(&attributes, row.speed);
    }
    return {true, {row.warnings[0], row.warnings[1]}};
}

Outcome lineformat::setDataBits(PortSettings& inForce, termios& attributes, DataBitsType dataBits)
{
    if (!isDataBits(dataBits))
        return refused(noSuchValue);
    if (dataBits == DataBits5 && inForce.StopBits == StopBits2)
        return refused("Posix_QextSerialPort: 5 Data bits cannot be used with 2 stop bits.");
    if (dataBits != DataBits5 && inForce.StopBits == StopBits1_5)
        return refused(withOneAndAHalfStopBits[dataBits]);
    if (dataBits == DataBits8 && inForce.Parity == ParitySpace)
        return refused(spaceWith8);
    inForce.DataBits = dataBits;
    put(attributes.c_cflag, CSIZE, characterSizes[dataBits]);
    return {};
}

Outcome lineformat::setParity(PortSettings& inForce, termios& attributes, ParityType parity)
{
    switch (parity) {
    case ParityNone:
        put(attributes.c_cflag, PARENB | PARODD, 0);
        break;
    case ParityOdd:
        put(attributes.c_cflag, PARENB | PARODD, PARENB | PARODD);
        break;
    case ParityEven:
        put(attributes.c_cflag, PARENB | PARODD, PARENB);
        break;
    case ParitySpace:
        if (inForce.DataBits < DataBits5 || inForce.DataBits >= DataBits8)
            return refused(spaceWith8);
        put(attributes.c_cflag, PARENB | PARODD, 0);
        // The highest data bit, which is always 0, stands where the parity bit would be.
        inForce.DataBits = static_cast<DataBitsType>(inForce.DataBits + 1);
        put(attributes.c_cflag, CSIZE, characterSizes[inForce.DataBits]);
        break;
    case ParityMark:
        return refused("Posix_QextSerialPort: Mark parity is not supported by POSIX.");
    default:
        return refused(noSuchValue);
    }
    inForce.Parity = parity;
    return {};
}

Outcome lineformat::setStopBits(PortSettings& inForce, termios& attributes, StopBitsType stopBits)
{
    switch (stopBits) {
    case StopBits1:
        put(attributes.c_cflag, CSTOPB, 0);
        break;
    case StopBits2:
        if (inForce.DataBits == DataBits5)
            return refused("Posix_QextSerialPort: 2 stop bits cannot be used with 5 data bits");
        put(attributes.c_cflag, CSTOPB, CSTOPB);
        break;
    case StopBits1_5:
        return refused("Posix_QextSerialPort: 1.5 stop bit operation is not supported by POSIX.");
    default:
        return refused(noSuchValue);
    }
    inForce.StopBits = stopBits;
    return {};
}

Outcome lineformat::setFlowControl(PortSettings& inForce, termios& attributes, FlowType flow)
{
    if (flow < FlowOff || flow > FlowXonXoff)
        return refused(noSuchValue);
    put(attributes.c_cflag, CRTSCTS, flow == FlowHardware ? CRTSCTS : 0);
    put(attributes.c_iflag, IXON | IXOFF, flow == FlowXonXoff ? IXON | IXOFF : 0);
    // Raw mode switches the two characters off.
    attributes.c_cc[VSTART] = flow == FlowXonXoff ? 0x11 : 0;
    attributes.c_cc[VSTOP] = flow == FlowXonXoff ? 0x13 : 0;
    inForce.FlowControl = flow;
    return {};
}

Outcome lineformat::setTimeout(PortSettings& inForce, termios& attributes, qint64 timeoutMs)
{
    constexpr qint64 longestTenths = 255; // what the field holds
    attributes.c_cc[VTIME] = static_cast<cc_t>(std::clamp<qint64>(timeoutMs / 100, 0, longestTenths));
    inForce.Timeout = timeoutMs;
    inForce.TimeoutSeconds = timeoutMs / 1000;
    inForce.TimeoutRestMs = timeoutMs % 1000;
    return {};
}

void lineformat::setRaw(termios& attributes)
{
    for (const int character : {VINTR, VQUIT, VSTART, VSTOP, VSUSP, VMIN})
        attributes.c_cc[character] = 0;
    attributes.c_cflag |= CREAD | CLOCAL;
    attributes.c_lflag &= ~tcflag_t{ICANON | ECHO | ECHOE | ECHOK | ECHONL | ISIG};
    attributes.c_iflag &= ~tcflag_t{IGNPAR | PARMRK | INPCK | ISTRIP | ICRNL | IXANY};
    // Left over from a former user of the line, these would drop or change bytes of frames.
    attributes.c_iflag &= ~tcflag_t{IGNCR | INLCR | IUCLC | IGNBRK | BRKINT};
    attributes.c_oflag &= ~tcflag_t{OPOST};
}
