#include "curvethinner.h"

#include <QtMath>

void CurveThinner::add(qint64 timeMs, double value)
{
    if (qIsNaN(value)) {
        breakHere();
        return;
    }
    const QPointF point(static_cast<double>(timeMs), value);
    const qint64 number = timeMs / m_sliceMs;
    if (m_isBroken || m_slices.empty() || m_slices.back().number != number) {
        m_slices.push_back({number, m_isBroken, point, point});
        m_isBroken = false;
        return;
    }
    Slice& slice = m_slices.back();
    if (value < slice.lowest.y())
        slice.lowest = point;
    if (value > slice.highest.y())
        slice.highest = point;
}

void CurveThinner::dropBefore(qint64 timeMs)
{
    const qint64 number = timeMs / m_sliceMs;
    while (m_slices.size() > 1 && m_slices[1].number < number)
        m_slices.pop_front();
}

TrendCurveData CurveThinner::data() const
{
    TrendCurveData result;
    result.points.reserve(2 * static_cast<int>(m_slices.size()));
    for (const Slice& slice : m_slices) {
        if (slice.isStart || result.starts.isEmpty())
            result.starts += result.points.size();
        const bool isLowestFirst = slice.lowest.x() <= slice.highest.x();
        result.points += isLowestFirst ? slice.lowest : slice.highest;
        if (slice.lowest != slice.highest)
            result.points += isLowestFirst ? slice.highest : slice.lowest;
    }
    return result;
}
