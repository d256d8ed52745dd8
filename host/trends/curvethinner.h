#pragma once

#include <QPointF>
#include <QVector>

#include <deque>

/// One curve as a plot needs it: points in order of time, x in milliseconds since 1970, and where it is
/// broken.
struct TrendCurveData
{
    QVector<QPointF> points;
    QVector<int> starts; ///< index of the first point of each unbroken part, in ascending order
};

/// Thins a curve to what can be seen: of all values in a slice of time (one pixel) the smallest and the
/// largest stay, with their own times, so that no peak is lost. A plain value.
class CurveThinner
{
public:
    /// sliceMs is 1 or more.
    explicit CurveThinner(qint64 sliceMs)
        : m_sliceMs(sliceMs)
    {}

    /// Takes the next value; times never go back. A value that is absent (NaN) breaks the curve.
    void add(qint64 timeMs, double value);
    /// The next value starts a new part.
    void breakHere() { m_isBroken = true; }
    /// Forgets what lies before a time, but for one slice, from which the curve enters.
    void dropBefore(qint64 timeMs);

    TrendCurveData data() const;

private:
    struct Slice
    {
        qint64 number;
        bool isStart;
        QPointF lowest;
        QPointF highest;
    };

    qint64 m_sliceMs;
    bool m_isBroken = true;
    std::deque<Slice> m_slices;
};
