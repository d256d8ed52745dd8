#include "infopanel.h"

#include "flowfont.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double cornerRadius = 8;
constexpr double sideMargin = 12;
constexpr double endMargin = 4; // above the title and below the last row
constexpr double columnGap = 8;
constexpr double points = 11;

constexpr QRgb background = qRgb(245, 246, 250);
constexpr QRgb titleColor = qRgb(102, 102, 102);
constexpr QRgb captionColor = qRgb(64, 68, 84);
constexpr QRgb valueColor = qRgb(19, 75, 255);
constexpr QRgb ruleColor = qRgb(222, 225, 236);

QString shown(const QString& value)
{
    return value.isEmpty() ? QStringLiteral("-") : value;
}

QFont rowFont(const QSizeF& line, const QVector<InfoRow>& rows)
{
    return flowfont::fitting(points, QFont::Normal, [&](const QFontMetricsF& metrics) {
        const auto isWithin = [&](const InfoRow& row) {
            return metrics.width(row.first) + columnGap + metrics.width(shown(row.second)) <= line.width();
        };
        return metrics.height() <= line.height() && std::all_of(rows.begin(), rows.end(), isWithin);
    });
}

void drawTitle(QPainter* painter, const QRectF& line, const QString& title)
{
    painter->setFont(flowfont::fitting(points, QFont::Bold, [&](const QFontMetricsF& metrics) {
        return metrics.height() <= line.height() && metrics.width(title) <= line.width();
    }));
    painter->setPen(QColor(titleColor));
    painter->drawText(line, Qt::AlignCenter | Qt::TextSingleLine, title);
    painter->fillRect(QRectF(line.x(), qRound(line.bottom()) - 1, line.width(), 1), QColor(ruleColor));
}

// Each text runs in its own direction: "-10.0 V" must not read "V 10.0-" in hosts that run from right to
// left.
void drawText(QPainter* painter, const QRectF& line, Qt::Alignment side, const QString& text)
{
    painter->setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter->drawText(line, int(side | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine, text);
}

void drawRow(QPainter* painter, const QRectF& line, const InfoRow& row)
{
    const QFontMetricsF metrics(painter->font());
    const QString value = shown(row.second);
    // The caption gives way to the value, down to a quarter of the line.
    const double captionRoom = qMax(line.width() / 4, line.width() - columnGap - metrics.width(value));
    const QString caption = metrics.elidedText(row.first, Qt::ElideRight, captionRoom);
    const double valueRoom = line.width() - columnGap - qMin(captionRoom, metrics.width(caption));
    painter->setPen(QColor(captionColor));
    drawText(painter, line, Qt::AlignLeft, caption);
    painter->setPen(QColor(valueColor));
    drawText(painter, line, Qt::AlignRight, metrics.elidedText(value, Qt::ElideRight, valueRoom));
}

} // namespace

void drawInfoPanel(QPainter* painter, const QRectF& box, const QString& title, const QVector<InfoRow>& rows)
{
    painter->save();
    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor(background));
    painter->drawRoundedRect(box, cornerRadius, cornerRadius);

    // Lines of whole pixels are evenly apart; what is left over goes above the title.
    const double lineHeight = std::floor((box.height() - 2 * endMargin) / (rows.size() + 1));
    QRectF line(box.x() + sideMargin, box.bottom() - endMargin - lineHeight * (rows.size() + 1),
                box.width() - 2 * sideMargin, lineHeight);
    drawTitle(painter, line, title);
    painter->setFont(rowFont(line.size(), rows));
    for (const InfoRow& row : rows) {
        line.translate(0, line.height());
        drawRow(painter, line, row);
    }
    painter->restore();
}
