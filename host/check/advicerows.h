#pragma once

#include "diagnosis.h"

namespace diagnosis {

/// What to do about a finding, on a serial line and over TCP; null where it cannot be found there. Names in
/// braces are filled in.
struct AdviceRow
{
    Finding finding;
    const char* onLine;
    const char* onTcp;
};

// clang-format off
constexpr AdviceRow adviceRows[] = {
    {Finding::NoDriver,
     "put the model's libvek5m_10-30k.so beside the program",
     "put the model's libvek5m_10-30k.so beside the program"},
    {Finding::NoSuchDevice,
     "no such device {target}: is the adapter plugged in? \"ls /dev/tty*\" shows what is there",
     nullptr},
    {Finding::NotPermitted,
     "permission denied for {target}: add your user to the group \"{group}\" (sudo usermod -aG {group} $USER), "
     "then log in again",
     nullptr},
    {Finding::NotPermittedToAnyone,
     "permission denied for {target}, to every group: a udev rule has to allow it",
     nullptr},
    {Finding::NotALine,
     "{target} cannot be opened as a serial line with the settings \"{settings}\": check both",
     nullptr},
    {Finding::UnknownHost,
     nullptr,
     "{target} has no address: check ipAddr in dev.ini"},
    {Finding::Refused,
     nullptr,
     "{target} refuses the connection: check the port number, and that the unit's network card has Modbus TCP "
     "switched on and free connections"},
    {Finding::Unreachable,
     nullptr,
     "nothing came back from {target} in time: check address, network cable and firewall"},
    {Finding::SharedLine,
     "{users} has {target} open as well, and two that ask spoil each other's answers: end it, then check again",
     nullptr},
    {Finding::NoBytes,
     "not one byte came back: is the unit on, the cable the right one (RS-485 A and B not swapped), the address "
     "{address} right?",
     "{target} is connected and silent: is the unit id {address} right?"},
    {Finding::NoAnswers,
     "bytes come, but no frame does: compare speed and parity (now {settings}) with the unit's, then look for "
     "noise, missing termination or swapped wires",
     "what comes from {target} is no Modbus TCP answer: check the port number; behind a serial gateway also the "
     "speed and parity of its line"},
    {Finding::OtherUnit,
     "unit {other} answers instead of {address}: set addr={other} in dev.ini, or the unit's own address",
     "unit {other} answers instead of {address}: set addr={other} in dev.ini, or the unit's own address"},
    {Finding::TooLate,
     "the answer comes later than after {timeout} ms: raise timeout in serial.ini",
     "the answer comes later than after {timeout} ms: look for a slow network, or for other programs that ask "
     "the same unit"},
    {Finding::Exception,
     "the unit refuses a request: the driver library is for another model or firmware",
     "the unit refuses a request: the driver library is for another model or firmware"},
    {Finding::ConnectionClosed,
     "{target} went away while it was read: is the adapter's plug loose?",
     "{target} closed the connection: it may serve one client only, and another one is there"},
    {Finding::Incomplete,
     "some answers come and some do not, or damaged: look for noise, missing termination and other programs on "
     "the line; or the driver library is for another model",
     "some answers come and some do not, or damaged: look for a weak network or serial line behind it, and for "
     "other programs that ask; or the driver library is for another model"},
};
// clang-format on

} // namespace diagnosis
