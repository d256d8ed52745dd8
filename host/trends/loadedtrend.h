#pragma once

#include "gapfinder.h"
#include "trenddata.h"

#include <QStringList>

#include <deque>
#include <vector>

/// The rows of one request, thinned as they are taken. A plain value without file or clock.
class LoadedTrend
{
public:
    LoadedTrend() = default;
    /// sliceMs is the time that one pixel stands for, 1 or more.
    explicit LoadedTrend(qint64 sliceMs);

    void setPeriodBeginnings(const QVector<qint64>& beginnings) { m_gaps.setPeriodBeginnings(beginnings); }
    /// Takes the next row: a text for each of trendrows. Nothing happens with one that is not later than the
    /// last one, as it comes when the clock was set back.
    void takeRow(qint64 timeMs, const QStringList& texts);
    /// Forgets what is older, so that a plot which goes on for months needs no more than one just opened.
    void dropBefore(qint64 timeMs);

    /// What there is between two times. isNow: toMs is the present, later rows are still to come.
    TrendData data(qint64 fromMs, qint64 toMs, bool isNow) const;
    qint64 lastMs() const { return m_lastMs; }

private:
    QVector<TrendSilence> silences(qint64 fromMs, qint64 toMs, bool isNow) const;

    std::vector<CurveThinner> m_curves;
    GapFinder m_gaps;
    std::deque<TrendSilence> m_silences; // between rows
    qint64 m_firstMs = 0;
    qint64 m_lastMs = 0; // 0 before the first row
};
