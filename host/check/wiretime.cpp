#include "wiretime.h"

#include "baudtable.h"

namespace wiretime {

int baudOf(BaudRateType rate)
{
    for (const BaudRow& row : baudTable) {
        if (row.value == rate)
            return row.baud;
    }
    return 0;
}

int bitsPerCharacter(const PortSettings& settings)
{
    const int shortestData = 5;
    const int parityBits = settings.Parity == ParityOdd || settings.Parity == ParityEven ? 1 : 0;
    const int stopBits = settings.StopBits == StopBits1 ? 1 : 2;
    return 1 + shortestData + settings.DataBits + parityBits + stopBits;
}

double queryMs(const Exchanges& exchanges, const PortSettings& settings)
{
    const int baud = baudOf(settings.BaudRate);
    if (baud == 0)
        return 0;
    const double silence = 3.5; // characters, after each frame
    double characters = 0;
    for (const Exchange& exchange : exchanges) {
        for (const QByteArray& frame : {exchange.request, exchange.answer})
            characters += frame.isEmpty() ? 0 : frame.size() + silence;
    }
    return characters * bitsPerCharacter(settings) * 1000 / baud;
}

} // namespace wiretime
