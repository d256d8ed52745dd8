#include "loading.h"

#include <QPainter>
#include <QTimerEvent>
#include <QtMath>

namespace {

constexpr int stepMs = 90;
constexpr int ringDots = 9;
constexpr int innerDots = 3;
constexpr qreal dotRadius = 6;
constexpr qreal innerDotRadius = 4;
constexpr qreal ringRadius = 27; // leaves half a dot between two dots
constexpr qreal innerRadius = 10;

QPointF onCircle(qreal radius, qreal turns)
{
    const qreal angle = 2 * M_PI * turns;
    return {radius * qSin(angle), -radius * qCos(angle)};
}

} // namespace

Loading::Loading(QWidget* parent)
    : QWidget(parent)
{
    setAccessibleName(tr("Please wait"));
}

void Loading::drawLoading(QPainter* painter)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->translate(QRectF(rect()).center());
    const qreal turned = qreal(m_step) / ringDots;
    for (int i = 1; i <= innerDots; ++i) {
        painter->setBrush(QColor(50, 20, 40, 80 * i));
        painter->drawEllipse(onCircle(innerRadius, turned + qreal(i) / innerDots), innerDotRadius,
                             innerDotRadius);
    }
    for (int i = 1; i <= ringDots; ++i) {
        painter->setBrush(QColor(255, 190, 15, 255 * i / ringDots));
        painter->drawEllipse(onCircle(ringRadius, turned + qreal(i) / ringDots), dotRadius, dotRadius);
    }
    painter->restore();
}

QSize Loading::sizeHint() const
{
    constexpr int side = 2 * int(ringRadius + dotRadius) + 2; // and a pixel around it for smooth edges
    return {side, side};
}

void Loading::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    drawLoading(&painter);
}

void Loading::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_ticks.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    m_step = (m_step + 1) % ringDots;
    update();
}

void Loading::showEvent(QShowEvent* event)
{
    m_ticks.start(stepMs, this);
    QWidget::showEvent(event);
}

void Loading::hideEvent(QHideEvent* event)
{
    m_ticks.stop();
    QWidget::hideEvent(event);
}
