#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

/// Event types and the record that carries an event.
namespace eventrecord {

/// Type of a postDEvent. The keys of each are listed in docs/host-integration.md.
enum Type
{
    Restored = 1040,     ///< the unit answers, first or again
    Lost = 1041,         ///< the unit no longer answers
    Downloaded = 1042,   ///< the history download has been carried out
    Summary = 2001,      ///< echo of Restored and Lost; and "an alarm appeared in this report"
    AlarmChanged = 2006, ///< one alarm point changed
    Data = 2007,         ///< the whole data map
    Status2368 = 2009,   ///< point 2368 changed
    Status2022 = 2010    ///< point 2022 changed
};

/// A record with the keys common to all events of a cycle; "timeStr" is the local time.
QMap<QString, QVariant> begin(const QString& deviceName, int protocol, const QString& portName);

} // namespace eventrecord
