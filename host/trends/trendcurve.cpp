#include "trendcurve.h"

#include <qwt_scale_map.h>

#include <QPainter>
#include <QPen>
#include <QtMath>

#include <algorithm>

namespace {
constexpr qreal lineWidth = 1.4;
constexpr qreal dotWidth = 3;
} // namespace

TrendCurve::TrendCurve(const QColor& color)
{
    setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::BevelJoin));
    setRenderHint(QwtPlotItem::RenderAntialiased);
    setPaintAttribute(QwtPlotCurve::FilterPoints);
    setItemAttribute(QwtPlotItem::Legend, false);
    setItemAttribute(QwtPlotItem::AutoScale, false);
}

void TrendCurve::setData(const TrendCurveData& data)
{
    m_data = data;
    setSamples(data.points);
}

double TrendCurve::valueAt(double timeMs, double distanceMs) const
{
    const QVector<QPointF>& points = m_data.points;
    auto next = std::lower_bound(points.cbegin(), points.cend(), timeMs,
                                 [](const QPointF& point, double time) { return point.x() < time; });
    if (next != points.cbegin() && (next == points.cend() || timeMs - (next - 1)->x() < next->x() - timeMs))
        --next;
    const bool isNear = next != points.cend() && qAbs(next->x() - timeMs) <= distanceMs;
    return isNear ? next->y() : qQNaN();
}

double TrendCurve::lastValue() const
{
    return m_data.points.isEmpty() ? qQNaN() : m_data.points.constLast().y();
}

void TrendCurve::drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                            const QRectF& canvasRect, int, int) const
{
    for (int i = 0; i < m_data.starts.size(); ++i) {
        const int from = m_data.starts[i];
        const int to = m_data.starts.value(i + 1, m_data.points.size()) - 1;
        if (from < to) {
            QwtPlotCurve::drawSeries(painter, xMap, yMap, canvasRect, from, to);
            continue;
        }
        // A part of one value is no line.
        const QPointF& point = m_data.points[from];
        painter->setPen(QPen(pen().color(), dotWidth, Qt::SolidLine, Qt::RoundCap));
        painter->drawPoint(QPointF(xMap.transform(point.x()), yMap.transform(point.y())));
    }
}
