#include "trendplot.h"

#include "silenceitem.h"
#include "timeaxis.h"
#include "trendcurve.h"

#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QtMath>

#include <limits>

namespace {

// Each has a contrast of 4.5 or more to white, and they differ for the colour-blind as well.
constexpr QRgb curveColors[trendrows::maxCurves] = {qRgb(41, 71, 198), qRgb(176, 80, 0), qRgb(0, 121, 107)};
constexpr QRgb gridColor = qRgb(230, 233, 243);
constexpr QRgb cursorColor = qRgb(86, 93, 120);
constexpr int canvasHeight = 46; // at least
constexpr int timeAxisHeight = 22;
constexpr int valueSteps = 3;
constexpr int pxPerTimeLabel = 80;
constexpr double cursorReachPx = 6; // a value farther away is not that of the cursor's time
constexpr double axisFontPoints = 8;
constexpr int legendSpacing = 14;
constexpr int legendSpace = 3; // below it

QString readingText(const QColor& color, const char* name, double value)
{
    const QString number = qIsNaN(value) ? QStringLiteral("--") : QString::number(value, 'f', 1);
    return QStringLiteral("<span style=\"color:%1\">\u25CF</span> %2 <b>%3</b>")
        .arg(color.name(), QString::fromUtf8(name), number);
}

} // namespace

TrendPlot::TrendPlot(const trendrows::Row& row, const QString& title, QWidget* parent)
    : QWidget(parent)
    , m_row(row)
    , m_title(title)
    , m_plot(new QwtPlot(this))
{
    setObjectName(QStringLiteral("TrendPlot"));
    setAccessibleName(title);
    makePlot();
    makeCurves();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(legendSpace);
    column->addLayout(makeLegend());
    column->addWidget(m_plot, 1);
    showReadings();
}

TrendPlot::~TrendPlot() = default;

void TrendPlot::makePlot()
{
    auto* canvas = new QwtPlotCanvas(m_plot);
    canvas->setFrameStyle(QFrame::NoFrame);
    canvas->setMouseTracking(true);
    canvas->setCursor(Qt::CrossCursor);
    canvas->installEventFilter(this);
    m_plot->setCanvas(canvas);
    m_plot->setCanvasBackground(Qt::white);
    m_plot->plotLayout()->setAlignCanvasToScales(true);
    // Its own wish is for far more height than a plot among others gets.
    m_plot->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_plot->setFocusPolicy(Qt::NoFocus); // the keys belong to all plots together

    // Over the plot, not in it: the curves are not drawn anew when it moves.
    m_cursorLine = new QFrame(canvas);
    m_cursorLine->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_cursorLine->setAutoFillBackground(true);
    m_cursorLine->setPalette(QPalette(QColor(cursorColor)));
    m_cursorLine->hide();

    m_plot->setAxisScaleDraw(QwtPlot::xBottom, new TimeAxis);
    QFont axisFont = font();
    axisFont.setPointSizeF(axisFontPoints);
    for (const int axis : {QwtPlot::yLeft, QwtPlot::xBottom}) {
        m_plot->setAxisAutoScale(axis, false);
        m_plot->setAxisFont(axis, axisFont);
        m_plot->axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Backbone, false);
        m_plot->axisWidget(axis)->setObjectName(QStringLiteral("TrendAxis"));
        m_plot->axisWidget(axis)->setMargin(0);
    }
}

void TrendPlot::makeCurves()
{
    m_silences = new SilenceItem;
    m_silences->attach(m_plot);
    auto* grid = new QwtPlotGrid;
    grid->setMajorPen(QColor(gridColor));
    grid->attach(m_plot);
    for (const QRgb color : curveColors) {
        if (m_curves.size() == trendrows::curveCount(m_row))
            break;
        m_curves += new TrendCurve(QColor(color));
        m_curves.constLast()->attach(m_plot);
    }
}

QLayout* TrendPlot::makeLegend()
{
    auto* legend = new QHBoxLayout;
    legend->setSpacing(legendSpacing);
    auto* title = new QLabel(m_title + QStringLiteral(", ") + QLatin1String(m_row.unit), this);
    title->setObjectName(QStringLiteral("TrendTitle"));
    legend->addWidget(title);
    legend->addStretch();
    for (int i = 0; i < m_curves.size(); ++i) {
        auto* reading = new QLabel(readingText(m_curves[i]->pen().color(), m_row.curves[i], 0), this);
        reading->setObjectName(QStringLiteral("TrendReading"));
        reading->setTextFormat(Qt::RichText);
        m_readings += reading;
        legend->addWidget(reading);
    }
    return legend;
}

void TrendPlot::setData(const TrendData& trend, const QVector<TrendCurveData>& curves)
{
    showTimes(trend);
    showRange(curves);
    for (int i = 0; i < m_curves.size(); ++i)
        m_curves[i]->setData(curves.value(i));
    m_plot->replot();
    placeCursor();
    showReadings();
}

void TrendPlot::showTimes(const TrendData& trend)
{
    m_fromMs = static_cast<double>(trend.fromMs);
    m_toMs = static_cast<double>(trend.toMs);
    m_silences->setSilences(trend.silences);
    m_isSilentAtEnd = !trend.silences.isEmpty() && trend.silences.constLast().toMs >= trend.toMs;
    m_plot->setAxisScaleDiv(QwtPlot::xBottom,
                            TimeAxis::ticks(m_fromMs, m_toMs, qMax(2, canvasWidth() / pxPerTimeLabel)));
}

void TrendPlot::showRange(const QVector<TrendCurveData>& curves)
{
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    for (const TrendCurveData& curve : curves) {
        for (const QPointF& point : curve.points) {
            if (point.x() < m_fromMs || point.x() > m_toMs)
                continue; // only leads into the plot
            low = qMin(low, point.y());
            high = qMax(high, point.y());
        }
    }
    if (low > high) { // no values: no numbers at the axis either
        m_plot->setAxisScaleDiv(QwtPlot::yLeft, QwtScaleDiv(0, 1));
        m_plot->updateAxes();
        return;
    }
    trendrows::Range range = trendrows::axisRange(m_row, low, high);
    double step = 0;
    const QwtLinearScaleEngine engine;
    engine.autoScale(valueSteps, range.low, range.high, step);
    m_plot->setAxisMaxMinor(QwtPlot::yLeft, 0);
    m_plot->setAxisScale(QwtPlot::yLeft, range.low, range.high, step);
    m_plot->updateAxes();
}

void TrendPlot::setCursor(std::optional<double> timeMs)
{
    m_cursorMs = timeMs;
    placeCursor();
    showReadings();
}

void TrendPlot::setEndKnown(bool isKnown)
{
    if (isKnown == m_isEndKnown)
        return;
    m_isEndKnown = isKnown;
    showReadings();
}

void TrendPlot::placeCursor()
{
    const bool isShown = m_cursorMs && *m_cursorMs >= m_fromMs && *m_cursorMs <= m_toMs;
    m_cursorLine->setVisible(isShown);
    if (isShown)
        m_cursorLine->setGeometry(qRound(m_plot->transform(QwtPlot::xBottom, *m_cursorMs)), 0, 1,
                                  m_plot->canvas()->height());
}

void TrendPlot::showReadings()
{
    const double reachMs = cursorReachPx * (m_toMs - m_fromMs) / qMax(1, canvasWidth());
    QStringList spoken;
    for (int i = 0; i < m_curves.size(); ++i) {
        const TrendCurve& curve = *m_curves[i];
        const double latest = m_isSilentAtEnd || !m_isEndKnown ? qQNaN() : curve.lastValue();
        const double value = m_cursorMs ? curve.valueAt(*m_cursorMs, reachMs) : latest;
        m_readings[i]->setText(readingText(curve.pen().color(), m_row.curves[i], value));
        const QString number = qIsNaN(value) ? tr("none") : QString::number(value, 'f', 1);
        spoken += QString::fromUtf8(m_row.curves[i]) + QLatin1Char(' ') + number;
    }
    setAccessibleDescription(spoken.join(QStringLiteral(", ")) + QLatin1Char(' ') +
                             QLatin1String(m_row.unit));
}

void TrendPlot::setTimeAxisVisible(bool isVisible)
{
    // A plot without this axis has no scale for its curves either: only what is drawn of it goes.
    QwtScaleDraw* axis = m_plot->axisScaleDraw(QwtPlot::xBottom);
    axis->enableComponent(QwtAbstractScaleDraw::Labels, isVisible);
    axis->enableComponent(QwtAbstractScaleDraw::Ticks, isVisible);
    m_plot->setMinimumHeight(canvasHeight + (isVisible ? timeAxisHeight : 0));
}

double TrendPlot::valueAxisWidth() const
{
    const QwtScaleWidget* axis = m_plot->axisWidget(QwtPlot::yLeft);
    return m_plot->axisScaleDraw(QwtPlot::yLeft)->maxLabelWidth(axis->font());
}

void TrendPlot::setValueAxisWidth(double width)
{
    QwtScaleDraw* axis = m_plot->axisScaleDraw(QwtPlot::yLeft);
    axis->setMinimumExtent(width + axis->spacing() + axis->maxTickLength());
    m_plot->updateLayout();
    placeCursor();
}

int TrendPlot::canvasWidth() const
{
    return m_plot->canvas()->width();
}

bool TrendPlot::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseMove)
        emit pointed(m_plot->invTransform(QwtPlot::xBottom, static_cast<QMouseEvent*>(event)->x()));
    else if (event->type() == QEvent::Leave)
        emit left();
    else if (event->type() == QEvent::Resize)
        placeCursor();
    return QWidget::eventFilter(watched, event);
}
