#include "timeaxis.h"

#include <qwt_date_scale_engine.h>

#include <QDateTime>
#include <QLocale>

TimeAxis::TimeAxis()
    : QwtDateScaleDraw(Qt::LocalTime)
{}

QwtText TimeAxis::label(double timeMs) const
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(qRound64(timeMs));
    if (time.time() == QTime(0, 0))
        return QLocale().toString(time.date(), QStringLiteral("ddd d MMM"));
    return time.toString(time.time().second() == 0 ? QStringLiteral("hh:mm") : QStringLiteral("hh:mm:ss"));
}

QwtScaleDiv TimeAxis::ticks(double fromMs, double toMs, int maxLabels)
{
    constexpr int maxMinorSteps = 6;
    QwtDateScaleEngine engine(Qt::LocalTime);
    engine.setAttribute(QwtScaleEngine::Floating);
    return engine.divideScale(fromMs, toMs, maxLabels, maxMinorSteps);
}
