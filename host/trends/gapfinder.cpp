#include "gapfinder.h"

#include <algorithm>

namespace {

// A slow unit's rows come somewhat irregularly.
constexpr qint64 leastGapMs = 5000;
constexpr qint64 farFactor = 3;
// With one row nothing is known of the interval yet: the longest that is in ordinary use.
constexpr qint64 unknownGapMs = 15LL * 60 * 1000;

} // namespace

bool GapFinder::takeRow(qint64 timeMs)
{
    const auto begun = std::upper_bound(m_beginnings.cbegin(), m_beginnings.cend(), m_lastMs);
    const bool wasLost = begun != m_beginnings.cend() && *begun <= timeMs;
    const bool isGap = m_hasRow && (wasLost || isFar(timeMs - m_lastMs));
    // Compared with the distance just before, long or short: the interval may differ from one run of the host
    // to the next.
    if (m_hasRow && !wasLost)
        m_distanceMs = timeMs - m_lastMs;
    m_lastMs = timeMs;
    m_hasRow = true;
    return isGap;
}

bool GapFinder::isSilentAt(qint64 timeMs) const
{
    return !m_hasRow || isFar(timeMs - m_lastMs);
}

bool GapFinder::isFar(qint64 distanceMs) const
{
    const qint64 limitMs = m_distanceMs > 0 ? qMax(leastGapMs, farFactor * m_distanceMs) : unknownGapMs;
    return distanceMs > limitMs;
}
