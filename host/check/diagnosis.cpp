#include "diagnosis.h"

#include "modbushelpers.h"

namespace diagnosis {

namespace {

constexpr int shortestFrame = 4; // unit id, function, CRC
constexpr int exceptionBit = 0x80;

const unsigned char* bytesOf(const QByteArray& frame)
{
    return reinterpret_cast<const unsigned char*>(frame.constData());
}

bool isFrame(const QByteArray& bytes)
{
    return bytes.size() >= shortestFrame && checkModbufCRC(bytesOf(bytes), bytes.size()) == 0;
}

QString settingsAdvice(const Facts& facts)
{
    return facts.isTcp
               ? QStringLiteral("what answers on %1 does not speak Modbus TCP: check the port number")
               : QStringLiteral("bytes come, but no frame does: compare speed and parity (now %1) with "
                                "the unit's, then look for noise, missing termination or swapped wires");
}

} // namespace

int otherUnitIn(const Exchanges& exchanges, int address)
{
    for (const Exchange& exchange : exchanges) {
        if (isFrame(exchange.answer) && bytesOf(exchange.answer)[0] != address)
            return bytesOf(exchange.answer)[0];
    }
    return 0;
}

Finding judge(const Exchanges& exchanges, int address, bool isConnected)
{
    // The last exchange is the one that failed: a driver stops there.
    const QByteArray answer = exchanges.isEmpty() ? QByteArray() : exchanges.constLast().answer;
    if (answer.isEmpty())
        return !isConnected           ? Finding::ConnectionClosed
               : exchanges.size() > 1 ? Finding::Incomplete
                                      : Finding::NoBytes;
    if (!isFrame(answer))
        return Finding::BadCrc;
    if (bytesOf(answer)[0] != address)
        return Finding::OtherUnit;
    return bytesOf(answer)[1] & exceptionBit ? Finding::Exception : Finding::Incomplete;
}

QString advice(Finding finding, const Facts& facts)
{
    switch (finding) {
    case Finding::Healthy:
        return {};
    case Finding::NoDriver:
        return QStringLiteral("put the model's libvek5m_10-30k.so beside the program");
    case Finding::NoSuchDevice:
        return QStringLiteral(
                   "no such device %1: is the adapter plugged in? \"ls /dev/tty*\" shows what is there")
            .arg(facts.target);
    case Finding::NotPermitted:
        return facts.group.isEmpty()
                   ? QStringLiteral("permission denied for %1").arg(facts.target)
                   : QStringLiteral("permission denied for %1: add your user to the group \"%2\" "
                                    "(sudo usermod -aG %2 $USER), then log in again")
                         .arg(facts.target, facts.group);
    case Finding::NotALine:
        return QStringLiteral("%1 cannot be opened as a serial line with the settings \"%2\": check both")
            .arg(facts.target, facts.settings);
    case Finding::UnknownHost:
        return QStringLiteral("%1 has no address: check ipAddr in dev.ini").arg(facts.target);
    case Finding::Refused:
        return QStringLiteral(
                   "%1 refuses the connection: check the port number, and that the unit's network card "
                   "has Modbus TCP switched on and free connections")
            .arg(facts.target);
    case Finding::Unreachable:
        return QStringLiteral("nothing came back from %1 in time: check address, network cable and firewall")
            .arg(facts.target);
    case Finding::NoBytes:
        return facts.isTcp
                   ? QStringLiteral("%1 is connected and silent: is the unit id %2 right?")
                         .arg(facts.target)
                         .arg(facts.address)
                   : QStringLiteral(
                         "not one byte came back: is the unit on, the cable the right one (RS-485 A and B "
                         "not swapped), the address %1 right?")
                         .arg(facts.address);
    case Finding::BadCrc:
        return settingsAdvice(facts).arg(facts.isTcp ? facts.target : facts.settings);
    case Finding::OtherUnit:
        return QStringLiteral(
                   "unit %1 answers instead of %2: set addr=%1 in dev.ini, or the unit's own address")
            .arg(facts.otherUnit)
            .arg(facts.address);
    case Finding::Exception:
        return QStringLiteral(
            "the unit refuses a request: the driver library is for another model or firmware");
    case Finding::ConnectionClosed:
        return QStringLiteral(
                   "%1 closed the connection: it may serve one client only, and another one is there")
            .arg(facts.target);
    case Finding::Incomplete:
        return QStringLiteral(
            "some requests are answered and some are not: a weak line, or a driver library for "
            "another model");
    }
    return {};
}

} // namespace diagnosis
