#include "silenceitem.h"

#include <qwt_scale_map.h>

#include <QPainter>

namespace {
constexpr QRgb groundColor = qRgb(243, 244, 249);
constexpr QRgb hatchColor = qRgb(205, 210, 225);
constexpr double behindGrid = -1;
} // namespace

SilenceItem::SilenceItem()
{
    setZ(behindGrid);
}

void SilenceItem::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap&,
                       const QRectF& canvasRect) const
{
    for (const TrendSilence& silence : m_silences) {
        const double left = qMax(xMap.transform(static_cast<double>(silence.fromMs)), canvasRect.left());
        const double right = qMin(xMap.transform(static_cast<double>(silence.toMs)), canvasRect.right());
        if (left >= right)
            continue;
        const QRectF area(left, canvasRect.top(), qMax(1.0, right - left), canvasRect.height());
        painter->fillRect(area, QColor(groundColor));
        painter->fillRect(area, QBrush(QColor(hatchColor), Qt::BDiagPattern));
    }
}
