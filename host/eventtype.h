#pragma once

/// The types of a collector's events. Those that a unit's pages emit (1029, and each command id) come from
/// the same signal.
namespace EventType {

enum Value
{
    SettingRequest = 1029,    ///< a unit's pages: the user confirmed a setting
    Communicating = 1040,     ///< first answer, or first one after a loss
    CommunicationLost = 1041, ///< no answer for as many cycles as the retry limit says
    CommandResult = 1042,     ///< a history download has been done
    Echo = 2001,              ///< repeats 1040 and 1041, and sums up a report in which an alarm appeared
    Alarm = 2006,             ///< one alarm appeared or cleared
    Data = 2007,              ///< every report: all values of the unit
    StatusPoint2368 = 2009,   ///< the point changed; the alarm of that point is told as well
    StatusPoint2022 = 2010    ///< as above
};

} // namespace EventType
