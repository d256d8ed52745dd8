#include "loadedtrend.h"

#include "trendrows.h"

#include <QtMath>

LoadedTrend::LoadedTrend(qint64 sliceMs)
{
    for (const trendrows::Row& row : trendrows::all)
        m_curves.insert(m_curves.end(), static_cast<size_t>(trendrows::curveCount(row)),
                        CurveThinner(sliceMs));
}

void LoadedTrend::takeRow(qint64 timeMs, const QStringList& texts)
{
    if (timeMs <= m_lastMs)
        return;
    const bool isGap = m_gaps.takeRow(timeMs);
    if (isGap)
        m_silences.push_back({m_lastMs, timeMs});
    if (m_lastMs == 0)
        m_firstMs = timeMs;
    m_lastMs = timeMs;
    auto curve = m_curves.begin();
    for (int i = 0; i < trendrows::count; ++i) {
        const QVector<double> values = trendrows::all[i].parse(texts.value(i));
        for (int j = 0; j < trendrows::curveCount(trendrows::all[i]); ++j, ++curve) {
            if (isGap)
                curve->breakHere();
            curve->add(timeMs, values.value(j, qQNaN()));
        }
    }
}

void LoadedTrend::dropBefore(qint64 timeMs)
{
    for (CurveThinner& curve : m_curves)
        curve.dropBefore(timeMs);
    while (!m_silences.empty() && m_silences.front().toMs < timeMs)
        m_silences.pop_front();
}

TrendData LoadedTrend::data(qint64 fromMs, qint64 toMs, bool isNow) const
{
    TrendData data;
    data.fromMs = fromMs;
    data.toMs = toMs;
    data.isEmpty = m_lastMs < fromMs || m_firstMs > toMs;
    for (const CurveThinner& curve : m_curves)
        data.curves += curve.data();
    data.silences = silences(fromMs, toMs, isNow);
    return data;
}

QVector<TrendSilence> LoadedTrend::silences(qint64 fromMs, qint64 toMs, bool isNow) const
{
    QVector<TrendSilence> list;
    if (m_lastMs == 0)
        return {{fromMs, toMs}};
    if (m_firstMs > fromMs)
        list += TrendSilence{fromMs, m_firstMs};
    for (const TrendSilence& silence : m_silences)
        list += silence;
    if (m_lastMs < toMs && (!isNow || m_gaps.isSilentAt(toMs)))
        list += TrendSilence{m_lastMs, toMs};
    return list;
}
