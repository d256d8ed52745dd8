#pragma once

#include "curvethinner.h"

#include <QMetaType>
#include <QString>

/// Which part of a unit's data log is wanted. All times are milliseconds, points in time since 1970.
struct TrendRequest
{
    QString unit;
    qint64 spanMs = 0;
    qint64 endMs = 0; ///< 0 is now, and goes on with it
    int widthPx = 0;  ///< of a plot: more points than that are not seen
};
Q_DECLARE_METATYPE(TrendRequest)

/// A time in which nothing was recorded.
struct TrendSilence
{
    qint64 fromMs = 0;
    qint64 toMs = 0;
};

/// What a plot window shows at one moment.
struct TrendData
{
    qint64 fromMs = 0;
    qint64 toMs = 0;
    bool isComplete = false;        ///< false while older rows are still being read
    bool isEmpty = true;            ///< there is no row in this time
    QVector<TrendCurveData> curves; ///< those of all rows of trendrows, in that order
    QVector<TrendSilence> silences; ///< in order of time
};
Q_DECLARE_METATYPE(TrendData)
