#pragma once

#include "trenddata.h"

#include <qwt_plot_item.h>

/// Marks on a plot the times in which nothing was recorded.
class SilenceItem : public QwtPlotItem
{
public:
    SilenceItem();

    void setSilences(const QVector<TrendSilence>& silences) { m_silences = silences; }

    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvasRect) const override;

private:
    QVector<TrendSilence> m_silences;
};
