#pragma once

#include <QVector>

/// Tells where nothing was heard between the rows of a unit's data log, which come one after the other in
/// the order of time. A plain value. All times are milliseconds since 1970.
class GapFinder
{
public:
    /// When each time of communication began, in ascending order.
    void setPeriodBeginnings(const QVector<qint64>& beginnings) { m_beginnings = beginnings; }

    /// Takes the next row. True when there is a gap before it: the unit was lost in between, or the rows are
    /// much farther apart than those before.
    bool takeRow(qint64 timeMs);

    /// True when a row should have come by now, judged in the same way.
    bool isSilentAt(qint64 timeMs) const;

private:
    bool isFar(qint64 distanceMs) const;

    QVector<qint64> m_beginnings;
    qint64 m_lastMs = 0;
    qint64 m_distanceMs = 0; // between the last two rows
    bool m_hasRow = false;
};
