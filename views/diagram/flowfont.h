#pragma once

#include <QFont>
#include <QFontInfo>
#include <QFontMetricsF>

/// The typeface of the energy-flow diagram.
namespace flowfont {

QFont make(double points, int weight);

/// The font in the greatest size, from the given one down to the least legible, that satisfies
/// `fits(metrics)`; in the least size when none does.
template <typename Fits>
QFont fitting(double points, int weight, Fits fits)
{
    constexpr int leastPixels = 10;
    QFont font = make(points, weight);
    // Counted in pixels, as the room is: points are larger where the screen says so.
    int pixels = QFontInfo(font).pixelSize();
    while (pixels > leastPixels && !fits(QFontMetricsF(font)))
        font.setPixelSize(--pixels);
    return font;
}

} // namespace flowfont
