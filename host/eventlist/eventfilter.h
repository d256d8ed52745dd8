#pragma once

#include "eventkind.h"

#include <QMetaType>
#include <QVariantList>

/// Which events a list shows, and as what statement a reader asks for them. A plain value.
struct EventFilter
{
    QString unit; ///< empty is every unit
    EventKinds::Set kinds = EventKinds::Set(EventKinds::all);

    /// The rows with ids from fromId to toId, both included, up to a number of them. Each of its steps is
    /// bounded by the ids that it looks at, however few of them the filter lets through.
    QString statement(Qt::SortOrder order) const;
    /// What to bind to the statement.
    QVariantList values(qint64 fromId, qint64 toId, int maxCount) const;
};
Q_DECLARE_METATYPE(EventFilter)
