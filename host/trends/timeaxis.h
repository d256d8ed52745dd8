#pragma once

#include <qwt_date_scale_draw.h>
#include <qwt_scale_div.h>

/// A time axis in local time: times of day, and the date where a day begins.
class TimeAxis : public QwtDateScaleDraw
{
public:
    TimeAxis();

    QwtText label(double timeMs) const override;

    /// Ticks at round times between two times, with labels at a number of them at most.
    static QwtScaleDiv ticks(double fromMs, double toMs, int maxLabels);
};
