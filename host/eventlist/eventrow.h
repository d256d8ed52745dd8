#pragma once

#include "eventkind.h"

#include <QMetaType>
#include <QString>
#include <QVector>

/// One event as a list shows it.
struct EventRow
{
    qint64 id = 0;    ///< grows in order of arrival
    qint64 utcMs = 0; ///< since 1970
    QString unit;
    EventKinds::Kind kind = EventKinds::Status;
    std::optional<int> code;
    QString text; ///< for people, one line
};
using EventRows = QVector<EventRow>;
Q_DECLARE_METATYPE(EventRows)
