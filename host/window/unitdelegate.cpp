#include "unitdelegate.h"

#include "unitlistmodel.h"

#include <QPainter>

namespace {

constexpr int margin = 10;
constexpr int markWidth = 10; // diameter of the mark
constexpr int textLeft = margin + markWidth + 10;
constexpr int lineGap = 3;
constexpr double stateFontScale = 0.9;

// The colours of the style sheet; each text has a contrast of 4.5 or more to every ground it may stand on.
const QColor textColor(0x1F, 0x24, 0x37);
const QColor mutedColor(0x56, 0x5D, 0x78);
const QColor dangerColor(0xB3, 0x26, 0x1E);
const QColor selectedGround(0xDD, 0xE3, 0xFF);
const QColor hoverGround(0xEE, 0xF1, 0xFF);
const QColor silentGround(0xFD, 0xEC, 0xEA);
const QColor accentColor(0x29, 0x47, 0xC6);
const QColor lineColor(0xE6, 0xE9, 0xF3);

struct ToneColors
{
    QColor mark;
    QColor text;
};

ToneColors colorsOf(UnitSummary::Tone tone)
{
    switch (tone) {
    case UnitSummary::Tone::Calm:
        return {QColor(0x1B, 0x87, 0x4B), mutedColor};
    case UnitSummary::Tone::Attention:
        return {QColor(0xC7, 0x6A, 0x00), QColor(0x8A, 0x4A, 0x00)};
    case UnitSummary::Tone::Danger:
    case UnitSummary::Tone::Silent:
        return {dangerColor, dangerColor};
    case UnitSummary::Tone::Unheard:
        break;
    }
    return {QColor(0x7F, 0x88, 0xAD), mutedColor};
}

QFont nameFont(QFont font)
{
    font.setBold(true);
    return font;
}

QFont stateFont(QFont font)
{
    font.setPointSizeF(font.pointSizeF() * stateFontScale);
    return font;
}

// A ring for a unit that has not answered, a cross for one that fell silent, else a disc.
void paintMark(QPainter& painter, const QRectF& box, UnitSummary::Tone tone)
{
    const QColor color = colorsOf(tone).mark;
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    const QRectF inner = box.adjusted(1, 1, -1, -1);
    if (tone == UnitSummary::Tone::Silent) {
        painter.drawLine(inner.topLeft(), inner.bottomRight());
        painter.drawLine(inner.topRight(), inner.bottomLeft());
        return;
    }
    if (tone != UnitSummary::Tone::Unheard)
        painter.setBrush(color);
    painter.drawEllipse(inner);
}

// The number of alarms in white on red; the width that it takes.
int paintBadge(QPainter& painter, const QRect& line, const UnitSummary& summary)
{
    if (summary.alarmCount == 0)
        return 0;
    const QString text = summary.alarmText();
    const int width = painter.fontMetrics().boundingRect(text).width() + 14;
    const QRect badge(line.right() + 1 - width, line.top() - 1, width, line.height() + 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(dangerColor);
    painter.drawRoundedRect(badge, badge.height() / 2.0, badge.height() / 2.0);
    painter.setPen(Qt::white);
    painter.drawText(badge, Qt::AlignCenter, text);
    return width + margin;
}

} // namespace

QSize UnitDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    const int height = QFontMetrics(nameFont(option.font)).height() + lineGap +
                       QFontMetrics(stateFont(option.font)).height() + 2 * margin;
    return {200, height};
}

void UnitDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const
{
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    const auto summary = index.data(UnitListModel::SummaryRole).value<UnitSummary>();
    const QRect inside = row.rect.adjusted(textLeft, margin, -margin, -margin);
    const int nameHeight = QFontMetrics(nameFont(row.font)).height();

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintGround(*painter, row, summary);
    paintName(*painter, row, {inside.left(), inside.top(), inside.width(), nameHeight}, summary);
    paintState(*painter, row, inside.adjusted(0, nameHeight + lineGap, 0, 0), summary);
    painter->restore();
}

void UnitDelegate::paintGround(QPainter& painter, const QStyleOptionViewItem& option,
                               const UnitSummary& summary) const
{
    const bool isSelected = (option.state & QStyle::State_Selected) != 0;
    if (isSelected)
        painter.fillRect(option.rect, selectedGround);
    else if (summary.tone == UnitSummary::Tone::Silent)
        painter.fillRect(option.rect, silentGround);
    else if ((option.state & QStyle::State_MouseOver) != 0)
        painter.fillRect(option.rect, hoverGround);
    painter.fillRect(QRect(option.rect.left(), option.rect.bottom(), option.rect.width(), 1), lineColor);
    if (isSelected)
        painter.fillRect(QRect(option.rect.left(), option.rect.top(), 4, option.rect.height()), accentColor);
    if ((option.state & QStyle::State_HasFocus) != 0) {
        painter.setPen(QPen(accentColor, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(option.rect).adjusted(1, 1, -1, -2));
    }
}

void UnitDelegate::paintName(QPainter& painter, const QStyleOptionViewItem& option, const QRect& line,
                             const UnitSummary& summary) const
{
    const int markTop = line.top() + (line.height() - markWidth) / 2;
    paintMark(painter, QRectF(option.rect.left() + margin + 2, markTop, markWidth, markWidth), summary.tone);

    painter.setFont(option.font);
    painter.setPen(textColor);
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, summary.loadText);
    const int loadWidth =
        summary.loadText.isEmpty() ? 0 : painter.fontMetrics().boundingRect(summary.loadText).width();
    painter.setFont(nameFont(option.font));
    const QString name =
        painter.fontMetrics().elidedText(option.text, Qt::ElideMiddle, line.width() - loadWidth - margin);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, name);
}

void UnitDelegate::paintState(QPainter& painter, const QStyleOptionViewItem& option, const QRect& line,
                              const UnitSummary& summary) const
{
    painter.setFont(stateFont(option.font));
    const int badgeWidth = paintBadge(painter, line, summary);
    painter.setPen(colorsOf(summary.tone).text);
    const QString text =
        painter.fontMetrics().elidedText(summary.stateText, Qt::ElideRight, line.width() - badgeWidth);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, text);
}
