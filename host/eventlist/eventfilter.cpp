#include "eventfilter.h"

QString EventFilter::statement(Qt::SortOrder order) const
{
    QString conditions = QStringLiteral("id BETWEEN ? AND ?");
    if (!unit.isEmpty())
        conditions += QStringLiteral(" AND +unit = ?"); // "+": the index on it would need sorting
    const QString kindCondition = EventKinds::condition(kinds);
    if (!kindCondition.isEmpty())
        conditions += QStringLiteral(" AND (%1)").arg(kindCondition);
    return QStringLiteral("SELECT id, time_ms, unit, type, code, text, state, record FROM event WHERE %1 "
                          "ORDER BY id %2 LIMIT ?")
        .arg(conditions, order == Qt::AscendingOrder ? QStringLiteral("ASC") : QStringLiteral("DESC"));
}

QVariantList EventFilter::values(qint64 fromId, qint64 toId, int maxCount) const
{
    QVariantList list{fromId, toId};
    if (!unit.isEmpty())
        list += unit;
    list += maxCount;
    return list;
}
