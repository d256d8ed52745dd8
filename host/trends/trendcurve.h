#pragma once

#include "curvethinner.h"

#include <qwt_plot_curve.h>

/// A curve with breaks: nothing is drawn from the end of one part to the start of the next.
class TrendCurve : public QwtPlotCurve
{
public:
    explicit TrendCurve(const QColor& color);

    void setData(const TrendCurveData& data);
    /// The value nearest in time, within distanceMs; NaN when there is none.
    double valueAt(double timeMs, double distanceMs) const;
    double lastValue() const;

    void drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                    const QRectF& canvasRect, int from, int to) const override;

private:
    TrendCurveData m_data;
};
