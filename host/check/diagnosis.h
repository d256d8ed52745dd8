#pragma once

#include "exchange.h"

#include <QString>

/// What stands between a host and a unit, and the one line of advice that goes with it. Pure functions.
namespace diagnosis {

/// What a check found, in the order in which it looks.
enum class Finding
{
    Healthy,
    NoDriver,         ///< the driver library or an entry of it is missing
    NoSuchDevice,     ///< the serial device does not exist
    NotPermitted,     ///< it exists, and may not be opened
    NotALine,         ///< it exists, and is no serial line, or its settings text is bad
    UnknownHost,      ///< the host name has no address
    Refused,          ///< the host is there, and nothing listens on the port
    Unreachable,      ///< nothing came back from the network in time
    NoBytes,          ///< requests went out, and not one byte came back
    BadCrc,           ///< bytes came that are no frame
    OtherUnit,        ///< a sound frame came from another unit id
    Exception,        ///< the unit refused a request
    ConnectionClosed, ///< the other side closed the connection while it was asked
    Incomplete        ///< the unit answered, but not everything
};

/// What the bytes of a query that failed tell. isConnected: whether the connection or port still stands.
Finding judge(const Exchanges& exchanges, int address, bool isConnected);

/// The facts that a line of advice may name.
struct Facts
{
    bool isTcp = false;
    QString target;    ///< device path, or host and port
    QString settings;  ///< serial settings text
    QString group;     ///< the group that may open the device; empty when unknown
    int address = 0;   ///< the unit id that was asked
    int otherUnit = 0; ///< the unit id that answered, for OtherUnit
};

/// What to do, in one line; empty for Healthy.
QString advice(Finding finding, const Facts& facts);

/// The unit id of the first sound frame that another unit sent; 0 when there is none.
int otherUnitIn(const Exchanges& exchanges, int address);

} // namespace diagnosis
