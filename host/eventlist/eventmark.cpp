#include "eventmark.h"

#include <QPainter>

namespace {

constexpr int side = 14; // of the drawing below, and of the mark in pixels
constexpr QRgb danger = qRgb(179, 38, 30);
constexpr QRgb good = qRgb(27, 122, 68);
constexpr QRgb neutral = qRgb(86, 93, 120);
constexpr QRgb accent = qRgb(41, 71, 198);
constexpr qreal lineWidth = 1.8;

void setLine(QPainter& painter, QRgb color)
{
    painter.setPen(QPen(QColor(color), lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
}

void setFill(QPainter& painter, QRgb color)
{
    setLine(painter, color);
    painter.setBrush(QColor(color));
}

void drawAlarm(QPainter& painter)
{
    setFill(painter, danger);
    painter.drawPolygon(QPolygonF({{7, 2}, {12.6, 12}, {1.4, 12}}));
    setLine(painter, qRgb(255, 255, 255));
    painter.drawLine(QPointF(7, 5.2), QPointF(7, 8.2));
    painter.drawPoint(QPointF(7, 10.8));
}

void drawCleared(QPainter& painter)
{
    setLine(painter, good);
    painter.drawPolyline(QPolygonF({{2.5, 7.5}, {5.5, 10.8}, {11.5, 3.5}}));
}

void drawLost(QPainter& painter)
{
    setFill(painter, danger);
    painter.drawEllipse(QPointF(7, 7), 5.5, 5.5);
    setLine(painter, qRgb(255, 255, 255));
    painter.drawLine(QPointF(4.9, 4.9), QPointF(9.1, 9.1));
    painter.drawLine(QPointF(9.1, 4.9), QPointF(4.9, 9.1));
}

void drawAnswering(QPainter& painter)
{
    setLine(painter, good);
    painter.drawEllipse(QPointF(7, 7), 5, 5);
    setFill(painter, good);
    painter.drawEllipse(QPointF(7, 7), 1.4, 1.4);
}

void drawCommand(QPainter& painter)
{
    setFill(painter, accent);
    painter.drawPolygon(QPolygonF({{4, 3}, {11, 7}, {4, 11}}));
}

void drawStatus(QPainter& painter)
{
    setFill(painter, neutral);
    painter.drawPolygon(QPolygonF({{7, 3.5}, {10.5, 7}, {7, 10.5}, {3.5, 7}}));
}

void draw(QPainter& painter, EventKinds::Kind kind)
{
    switch (kind) {
    case EventKinds::AlarmAppeared:
        return drawAlarm(painter);
    case EventKinds::AlarmCleared:
        return drawCleared(painter);
    case EventKinds::Lost:
        return drawLost(painter);
    case EventKinds::Answering:
        return drawAnswering(painter);
    case EventKinds::Command:
        return drawCommand(painter);
    case EventKinds::Status:
        return drawStatus(painter);
    }
}

} // namespace

QIcon eventmark::icon(EventKinds::Kind kind)
{
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        QPixmap pixmap(side * scale, side * scale);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(scale, scale);
        draw(painter, kind);
        painter.end();
        // Also for a selected row, where a style would tint it.
        for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Selected})
            icon.addPixmap(pixmap, mode);
    }
    return icon;
}
