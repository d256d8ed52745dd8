#pragma once

#include "parameterinformation.h"

/// What becomes of a user's entry on its way to the unit: functions of a record and the entry.
namespace settingentry {

/// The raw value of a typed number, shown value by ratio. The number is read in the C locale, then in the
/// user's; anything else counts as 0. Beyond an int the nearest int.
int rawFromText(const QString& text, float ratio);

/// The raw value of an option with this stored value; see rawFromText.
int rawFromOption(const QString& text, int value, float ratio);

/// Whether a raw value may be sent: within the record's range or, without one, as long as an int held it.
bool isAllowed(const ParameterInformation& record, int rawValue);

/// The entry as the unit keeps it: text records are cut to their length, the system time becomes its numbers
/// joined by commas without the century; others stay as they are.
QString nodeText(const ParameterInformation& record, const QString& entry);

/// The request value: point id, comma, then the text of a text record or else the raw value.
QString requestValue(const ParameterInformation& record, const QString& nodeText, int rawValue);

} // namespace settingentry
