#pragma once

#include "journalrecord.h"

#include <QVariantMap>

/// Which events of a unit the journal keeps, and what of them. Pure functions.
namespace journalevent {

/// Nothing for an event that is not kept: the values (2007), and the echo (2001), which repeats a 1040, a
/// 1041 or the last alarm of a report; kept, it would tell them twice. eventTexts are the plugin's, by event
/// code.
std::optional<JournalEvent> from(qint64 utcMs, const QString& unitName, int type, const QVariantMap& record,
                                 const QStringList& eventTexts);

} // namespace journalevent
