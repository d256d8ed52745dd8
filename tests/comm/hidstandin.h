#pragma once

/// Stands in for hidapi, so that the HID paths run where there is no HID hardware, as on a build machine.
/// What real devices do with the calls is not shown by it.
struct HidStandIn
{
    bool present = false; ///< hid_open finds a device
    int opens = 0;        ///< attempts
    int openNow = 0;      ///< devices open
    int nonBlocking = 0;  ///< devices set so
    int vendorId = 0;     ///< of the last attempt
    int productId = 0;
};

HidStandIn& hidStandIn();
