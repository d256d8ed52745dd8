#pragma once

#include "exchange.h"

#include <QString>

/// What stands between a host and a unit, and the one line of advice that goes with it. Pure functions.
namespace diagnosis {

/// What a check found, in the order in which it looks.
enum class Finding
{
    Healthy,
    NoDriver,             ///< the driver library or an entry of it is missing
    NoSuchDevice,         ///< the serial device does not exist
    NotPermitted,         ///< it exists, and only members of a group may open it
    NotPermittedToAnyone, ///< it exists, and no group may open it
    NotALine,             ///< it exists, and is no serial line, or its settings text is bad
    UnknownHost,          ///< the host name has no address
    Refused,              ///< the host is there, and nothing listens on the port
    Unreachable,          ///< nothing came back from the network in time
    SharedLine,           ///< the unit did not answer properly, and another program has the line open
    NoBytes,              ///< requests went out, and not one byte came back
    NoAnswers,            ///< bytes came, and not one answer among them
    OtherUnit,            ///< a sound answer came from another unit id
    TooLate,              ///< a sound answer came, after the driver had given up
    Exception,            ///< the unit refused a request
    ConnectionClosed,     ///< connection or device went away while the unit was asked
    Incomplete            ///< some answers came and some did not, or damaged
};

/// What the bytes of a query that failed tell. isConnected: whether the connection or port still stands.
/// timeoutMs: how long a driver's read waits for an answer to begin.
Finding judge(const Exchanges& exchanges, int address, int timeoutMs, bool isConnected);

/// The facts that a line of advice may name.
struct Facts
{
    bool isTcp = false;
    QString target;    ///< device path, or host and port
    QString settings;  ///< serial settings text
    QString group;     ///< the group that may open the device
    QString users;     ///< other programs that have the device open
    int timeoutMs = 0; ///< of a read
    int address = 0;   ///< the unit id that was asked
    int otherUnit = 0; ///< the unit id that answered, for OtherUnit
};

/// What to do, in one line; empty for Healthy.
QString advice(Finding finding, const Facts& facts);

/// The unit id of the first sound answer that another unit sent; 0 when there is none.
int otherUnitIn(const Exchanges& exchanges, int address);

} // namespace diagnosis
