#include "energyline.h"

#include "flowfont.h"
#include "infopanel.h"

#include <QLinearGradient>
#include <QPainter>
#include <QtMath>

using namespace flowgeometry;

// Must stand outside namespaces. A library that is linked as an archive loses the images otherwise.
static void loadImages()
{
    Q_INIT_RESOURCE(energyline);
}

namespace {

constexpr QRgb gradientTop = qRgb(157, 172, 255);
constexpr QRgb gradientBottom = qRgb(41, 71, 198);
constexpr QRgb trackColor = qRgb(240, 240, 245);
constexpr QRgb nameColor = qRgb(153, 153, 153);
constexpr QRgb flowColor = qRgb(157, 172, 255);
constexpr QRgb focusColor = qRgb(41, 71, 198);
constexpr QRgb wellColor = qRgb(30, 52, 150);
constexpr QRgb lowChargeColor = qRgb(255, 201, 71);

constexpr double blockRoundness = 25; // percent of half the block's width and height
constexpr double namePoints = 13;
constexpr double trackWidth = 10;
constexpr double flowWidth = 5;
constexpr int lowChargePercent = 20;

// What drawBase() paints. The battery's block is a layer of its own, only its name is here.
constexpr QRectF baseBox{-340, -215, 680, 295};

// Within the battery's block.
constexpr QRectF terminal{20, 6, 10, 4};
constexpr QRectF body{11, 10, 28, 38};
constexpr double bodyLine = 2;
constexpr QRectF percentLine{4, 50, 42, 16};

// The bar in a block whose panels are open, about the middle of its lower edge.
constexpr QRectF openMark{-11, -8, 22, 3};

void drawBlock(QPainter* painter, const QRectF& box)
{
    QLinearGradient gradient(box.topLeft(), box.bottomLeft());
    gradient.setColorAt(0, QColor(gradientTop));
    gradient.setColorAt(1, QColor(gradientBottom));
    painter->setPen(Qt::NoPen);
    painter->setBrush(gradient);
    painter->drawRoundedRect(box, blockRoundness, blockRoundness, Qt::RelativeSize);
}

void drawName(QPainter* painter, const Block& block, const QString& name)
{
    const QRectF box = nameBox(block);
    painter->setFont(flowfont::fitting(namePoints, QFont::Bold, [&](const QFontMetricsF& metrics) {
        return metrics.height() <= box.height() && metrics.width(name) <= box.width();
    }));
    painter->setPen(QColor(nameColor));
    painter->drawText(box, Qt::AlignCenter | Qt::TextSingleLine,
                      QFontMetricsF(painter->font()).elidedText(name, Qt::ElideRight, box.width()));
}

/// An image for a device pixel ratio; nothing where the resources are not at hand.
void drawImage(QPainter* painter, const Block& block, qreal pixelRatio)
{
    QString fileName = QString::fromLatin1(block.image);
    if (pixelRatio > 1)
        fileName.insert(fileName.lastIndexOf(QLatin1Char('.')), QLatin1String("@2x"));
    const QPixmap image(fileName);
    if (!image.isNull())
        painter->drawPixmap(block.imageBox, image, QRectF(image.rect()));
}

/// Keeps lines from being drawn over the blocks that they join, and over the battery's name.
void keepToTracks(QPainter* painter)
{
    QRegion region(baseBox.toRect());
    region -= hiddenTrack.toRect();
    for (const Block& block : blocks)
        region -= block.box.toAlignedRect();
    painter->setClipRegion(region, Qt::IntersectClip);
}

bool isClippedAway(const QPainter* painter, const QRectF& box)
{
    return painter->hasClipping() && !painter->clipRegion().intersects(box.toAlignedRect());
}

QRectF chargeBox(int percent)
{
    const double margin = bodyLine / 2 + 1.5;
    QRectF box = body.adjusted(margin, margin, -margin, -margin);
    box.setTop(box.bottom() - box.height() * percent / 100);
    return box;
}

} // namespace

QPixmap Energyline::paintedBase(qreal pixelRatio) const
{
    loadImages();
    QPixmap base(qCeil(baseBox.width() * pixelRatio), qCeil(baseBox.height() * pixelRatio));
    base.setDevicePixelRatio(pixelRatio);
    base.fill(Qt::transparent);
    QPainter painter(&base);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    painter.translate(-baseBox.topLeft());

    painter.save();
    keepToTracks(&painter);
    painter.setPen(QPen(QColor(trackColor), trackWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    painter.drawPolyline(track, std::size(track));
    painter.restore();
    for (int i = 0; i < blockCount; ++i) {
        const Block& block = blocks[i];
        drawName(&painter, block, tr(block.name));
        if (i == batteryBlock)
            continue;
        drawBlock(&painter, block.box);
        drawImage(&painter, block, pixelRatio);
    }
    return base;
}

void Energyline::drawBase(QPainter* painter)
{
    // Nothing here depends on the widget's size: one pixmap lasts until the screen's pixel ratio changes.
    // Also when a painter that scales or turns draws this widget.
    const qreal pixelRatio = qSqrt(qAbs(painter->deviceTransform().determinant()));
    if (m_base.isNull() || !qFuzzyCompare(m_base.devicePixelRatioF(), pixelRatio))
        m_base = paintedBase(pixelRatio);
    painter->drawPixmap(QPointF(m_centreX, m_centreY) + baseBox.topLeft(), m_base);
}

void Energyline::drawBattery(QPainter* painter)
{
    const QRectF block = blocks[batteryBlock].box.translated(m_centreX, m_centreY);
    if (isClippedAway(painter, block))
        return;
    painter->save();
    drawBlock(painter, block);
    painter->translate(block.topLeft());

    painter->setBrush(Qt::white);
    painter->drawRoundedRect(terminal, 1.5, 1.5);
    painter->setPen(QPen(Qt::white, bodyLine));
    painter->setBrush(QColor(wellColor));
    painter->drawRoundedRect(body, 4, 4);
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_chargePercent > lowChargePercent ? QColor(Qt::white) : QColor(lowChargeColor));
    if (m_chargePercent > 0)
        painter->drawRoundedRect(chargeBox(m_chargePercent), 1.5, 1.5);

    const QString text = m_chargePercent < 0 ? QStringLiteral("-")
                                             : QString(QString::number(m_chargePercent) + QLatin1Char('%'));
    painter->setFont(flowfont::fitting(9, QFont::Bold, [&](const QFontMetricsF& metrics) {
        return metrics.width(text) <= percentLine.width();
    }));
    painter->setPen(Qt::white);
    painter->drawText(percentLine, Qt::AlignCenter | Qt::TextSingleLine, text);
    painter->restore();
}

void Energyline::drawflow(QPainter* painter)
{
    QPen pen(QColor(flowColor), flowWidth, Qt::CustomDashLine, Qt::RoundCap, Qt::RoundJoin);
    pen.setDashPattern({2, 1.5, 2, 1.5});
    pen.setDashOffset(static_cast<double>(m_flowOffset));
    painter->save();
    painter->translate(m_centreX, m_centreY);
    keepToTracks(painter);
    painter->setPen(pen);
    for (std::size_t i = 0; i < m_flows.size(); ++i) {
        if (m_flows[i])
            painter->drawPolyline(paths[i].points, paths[i].count);
    }
    painter->restore();
}

QRegion Energyline::flowRegion() const
{
    constexpr int margin = 4; // half the pen and its smooth edge
    QRegion region;
    for (std::size_t i = 0; i < m_flows.size(); ++i) {
        const Path& path = paths[i];
        for (int end = 1; m_flows[i] && end < path.count; ++end) {
            const QRectF line = QRectF(path.points[end - 1], path.points[end]).normalized();
            region += line.translated(m_centreX, m_centreY)
                          .adjusted(-margin, -margin, margin, margin)
                          .toAlignedRect();
        }
    }
    return region;
}

void Energyline::drawMarks(QPainter* painter) const
{
    painter->save();
    painter->translate(m_centreX, m_centreY);
    painter->setPen(Qt::NoPen);
    painter->setBrush(Qt::white);
    for (const Block& block : blocks) {
        if (isOpen(block))
            painter->drawRoundedRect(openMark.translated(block.box.center().x(), block.box.bottom()), 1.5,
                                     1.5);
    }
    if (m_chosenBlock >= 0) {
        painter->setPen(QPen(QColor(focusColor), 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(blocks[m_chosenBlock].box.adjusted(-2, -2, 2, 2), blockRoundness,
                                 blockRoundness, Qt::RelativeSize);
    }
    painter->restore();
}

void Energyline::drawdate(QPainter* painter)
{
    drawMarks(painter);
    for (int view = 0; view < viewCount; ++view) {
        const Panel& panel = panels[view];
        const QRectF box = panel.box.translated(m_centreX, m_centreY);
        if (!m_views[view] || isClippedAway(painter, box))
            continue;
        QVector<InfoRow> rows;
        for (int i = 0; i < panel.rowCount; ++i)
            rows.append({tr(panel.rows[i].caption), m_texts[panel.rows[i].text]});
        drawInfoPanel(painter, box, tr(panel.title), rows);
    }
}
