#include "trends.h"

#include "trendplot.h"

#include <QComboBox>
#include <QDateTime>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <iterator>

namespace {

constexpr qint64 hourMs = 60LL * 60 * 1000;
constexpr qint64 dayMs = 24 * hourMs;
constexpr int spacing = 8;
constexpr int smallSpacing = 4;
constexpr int resizeSettleMs = 200;
constexpr int cursorStepPx = 1;
constexpr int largeCursorStepPx = 20;

struct Span
{
    qint64 ms;
    const char* text;
};

// clang-format off
constexpr Span spans[] = {
    {hourMs,     QT_TRANSLATE_NOOP("Trends", "1 hour")},
    {6 * hourMs, QT_TRANSLATE_NOOP("Trends", "6 hours")},
    {dayMs,      QT_TRANSLATE_NOOP("Trends", "1 day")},
    {3 * dayMs,  QT_TRANSLATE_NOOP("Trends", "3 days")},
    {7 * dayMs,  QT_TRANSLATE_NOOP("Trends", "1 week")},
};
// clang-format on

QString rangeText(qint64 fromMs, qint64 toMs)
{
    const QDateTime from = QDateTime::fromMSecsSinceEpoch(fromMs);
    const QDateTime to = QDateTime::fromMSecsSinceEpoch(toMs);
    const bool isToday = from.date() == QDate::currentDate() && to.date() == from.date();
    const QString format = isToday ? QStringLiteral("hh:mm") : QStringLiteral("d MMM hh:mm");
    return QLocale().toString(from, format) + QStringLiteral(" \u2013 ") + QLocale().toString(to, format);
}

} // namespace

Trends::Trends(const QString& journalFile, QWidget* parent)
    : QWidget(parent)
    , m_thread(journalFile)
{
    setObjectName(QStringLiteral("Trends"));
    setAttribute(Qt::WA_StyledBackground);
    m_request.spanMs = spans[0].ms;
    makeControls();
    makePlots();
    layOut();
    connectAll();
    m_thread.start(QStringLiteral("trends"));
    showState();
}

void Trends::makeControls()
{
    m_title = new QLabel(this);
    m_title->setObjectName(QStringLiteral("TrendsTitle"));
    m_title->setTextFormat(Qt::PlainText);
    m_time = new QLabel(this);
    m_time->setObjectName(QStringLiteral("TrendsTime"));
    m_spans = new QComboBox(this);
    m_spans->setObjectName(QStringLiteral("TrendsSpan"));
    m_spans->setAccessibleName(tr("How much time the trends show"));
    for (const Span& span : spans)
        m_spans->addItem(tr(span.text), span.ms);
    const auto makeButton = [this](const QString& text, const QString& name, const QString& tip) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(name);
        button->setToolTip(tip);
        button->setAccessibleDescription(tip);
        return button;
    };
    m_earlier = makeButton(tr("&Earlier"), QStringLiteral("TrendsEarlier"), tr("Shows the time before"));
    m_later = makeButton(tr("La&ter"), QStringLiteral("TrendsLater"), tr("Shows the time after"));
    m_now = makeButton(tr("&Now"), QStringLiteral("TrendsNow"), tr("Shows the present and goes on with it"));
    m_problem = new QLabel(this);
    m_problem->setObjectName(QStringLiteral("TrendsProblem"));
    m_problem->setTextFormat(Qt::PlainText);
    m_problem->setWordWrap(true);
    m_problem->hide();
    m_state = new QLabel(this);
    m_state->setObjectName(QStringLiteral("TrendsState"));
    m_state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // never widens the window
}

void Trends::makePlots()
{
    m_board = new QFrame;
    m_board->setObjectName(QStringLiteral("TrendsBoard"));
    m_board->setAccessibleName(tr("Trends"));
    m_board->setAccessibleDescription(tr("Left and right move the cursor, Page Up and Down the time"));
    m_board->setFocusPolicy(Qt::StrongFocus);
    m_board->installEventFilter(this);
    auto* column = new QVBoxLayout(m_board);
    column->setContentsMargins(spacing, smallSpacing, spacing, smallSpacing);
    column->setSpacing(smallSpacing);
    for (const trendrows::Row& row : trendrows::all) {
        auto* plot = new TrendPlot(row, tr(row.title), m_board);
        plot->setTimeAxisVisible(&row == std::end(trendrows::all) - 1);
        m_plots += plot;
        column->addWidget(plot, 1);
    }
}

void Trends::layOut()
{
    auto* bar = new QHBoxLayout;
    bar->setSpacing(spacing);
    bar->addWidget(m_title);
    bar->addSpacing(spacing);
    bar->addWidget(m_spans);
    bar->addWidget(m_earlier);
    bar->addWidget(m_later);
    bar->addWidget(m_now);
    bar->addWidget(m_state, 1);
    bar->addWidget(m_time);
    m_area = new QScrollArea(this);
    m_area->setObjectName(QStringLiteral("TrendsArea"));
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_area->setWidget(m_board);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing, smallSpacing, spacing, smallSpacing);
    column->setSpacing(smallSpacing);
    column->addLayout(bar);
    column->addWidget(m_problem);
    column->addWidget(m_area, 1);
}

void Trends::connectAll()
{
    TrendReader* reader = m_thread.reader();
    connect(this, &Trends::readWanted, reader, &TrendReader::read);
    connect(this, &Trends::pauseWanted, reader, &TrendReader::setPaused);
    connect(reader, &TrendReader::problemChanged, this, &Trends::showProblem);
    connect(reader, &TrendReader::dataRead, this, [this](int order, const TrendData& trend) {
        if (order == m_order)
            takeData(trend);
    });
    connect(m_spans, QOverload<int>::of(&QComboBox::activated), this, [this] {
        setSpan(m_spans->currentData().toLongLong());
        emit spanChanged(m_request.spanMs);
    });
    connect(m_earlier, &QPushButton::clicked, this, [this] { move(-1); });
    connect(m_later, &QPushButton::clicked, this, [this] { move(1); });
    connect(m_now, &QPushButton::clicked, this, [this] { requestEnd(0); });
    for (TrendPlot* plot : qAsConst(m_plots)) {
        connect(plot, &TrendPlot::pointed, this, [this](double timeMs) { setCursor(timeMs); });
        connect(plot, &TrendPlot::left, this, [this] { setCursor({}); });
    }
    m_resizeTimer.setSingleShot(true);
    m_resizeTimer.setInterval(resizeSettleMs);
    connect(&m_resizeTimer, &QTimer::timeout, this, &Trends::request);
}

void Trends::setUnit(const QString& unit)
{
    if (unit == m_request.unit)
        return;
    m_request.unit = unit;
    setCursor({});
    takeData({}); // never one unit's curves under another's name
    request();
}

void Trends::setSpan(qint64 spanMs)
{
    const int index = m_spans->findData(spanMs);
    if (index < 0 || spanMs == m_request.spanMs)
        return;
    m_spans->setCurrentIndex(index);
    m_request.spanMs = spanMs;
    request();
}

void Trends::showTime(qint64 utcMs)
{
    requestEnd(utcMs + m_request.spanMs / 2);
    setCursor(static_cast<double>(utcMs));
}

void Trends::move(int halfSpans)
{
    const qint64 endMs = m_request.endMs > 0 ? m_request.endMs : QDateTime::currentMSecsSinceEpoch();
    requestEnd(endMs + halfSpans * m_request.spanMs / 2);
}

// What would reach into the future is the present.
void Trends::requestEnd(qint64 endMs)
{
    m_request.endMs = endMs < QDateTime::currentMSecsSinceEpoch() ? endMs : 0;
    request();
}

void Trends::request()
{
    ++m_order;
    m_request.widthPx = m_plots.constFirst()->canvasWidth();
    m_thread.reader()->expect(m_order);
    m_data.isComplete = false;
    if (isVisible() && !m_request.unit.isEmpty())
        emit readWanted(m_order, m_request);
    showState();
}

void Trends::takeData(const TrendData& trend)
{
    m_data = trend;
    int first = 0;
    for (int i = 0; i < m_plots.size(); ++i) {
        const int count = trendrows::curveCount(trendrows::all[i]);
        m_plots[i]->setData(trend, trend.curves.mid(first, count));
        first += count;
    }
    alignPlots();
    showState();
}

void Trends::setUnitAnswering(bool isAnswering)
{
    m_isAnswering = isAnswering;
    showPresent();
}

void Trends::showPresent()
{
    for (TrendPlot* plot : qAsConst(m_plots))
        plot->setEndKnown(m_isAnswering || m_request.endMs > 0);
}

void Trends::alignPlots()
{
    double width = 0;
    for (const TrendPlot* plot : qAsConst(m_plots))
        width = qMax(width, plot->valueAxisWidth());
    for (TrendPlot* plot : qAsConst(m_plots))
        plot->setValueAxisWidth(width);
}

void Trends::setCursor(std::optional<double> timeMs)
{
    m_cursorMs = timeMs;
    for (TrendPlot* plot : qAsConst(m_plots))
        plot->setCursor(timeMs);
    m_time->setText(timeMs ? QLocale().toString(QDateTime::fromMSecsSinceEpoch(qRound64(*timeMs)),
                                                QStringLiteral("ddd d MMM yyyy, hh:mm:ss"))
                           : QString());
}

bool Trends::moveCursor(const QKeyEvent& event)
{
    const int stepPx = event.modifiers() & Qt::ControlModifier ? largeCursorStepPx : cursorStepPx;
    const double stepMs =
        static_cast<double>(stepPx * m_request.spanMs) / qMax(1, m_plots.constFirst()->canvasWidth());
    const auto fromMs = static_cast<double>(m_data.fromMs);
    const auto toMs = static_cast<double>(m_data.toMs);
    const double nowMs = m_cursorMs.value_or(toMs);
    if (m_data.toMs == 0 && event.key() != Qt::Key_PageUp && event.key() != Qt::Key_PageDown)
        return false; // nothing has been read yet
    switch (event.key()) {
    case Qt::Key_Left:
        return setCursor(qMax(fromMs, nowMs - stepMs)), true;
    case Qt::Key_Right:
        return setCursor(qMin(toMs, nowMs + stepMs)), true;
    case Qt::Key_Home:
        return setCursor(fromMs), true;
    case Qt::Key_End:
        return setCursor(toMs), true;
    case Qt::Key_Escape:
        return setCursor({}), true;
    case Qt::Key_PageUp:
        return move(-1), true;
    case Qt::Key_PageDown:
        return move(1), true;
    default:
        return false;
    }
}

bool Trends::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress)
        return moveCursor(*static_cast<QKeyEvent*>(event));
    if (event->type() == QEvent::Resize)
        m_resizeTimer.start();
    return QWidget::eventFilter(watched, event);
}

void Trends::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    emit pauseWanted(false);
    request();
}

void Trends::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    emit pauseWanted(true);
}

void Trends::showProblem(const QString& line)
{
    m_problem->setText(line);
    m_problem->setVisible(!line.isEmpty());
    showState();
}

void Trends::showState()
{
    const bool isLive = m_request.endMs == 0;
    m_title->setText(m_request.unit.isEmpty() ? tr("Trends") : tr("Trends of %1").arg(m_request.unit));
    m_later->setEnabled(!isLive);
    m_now->setEnabled(!isLive);
    QString state;
    if (m_request.unit.isEmpty())
        state = tr("Choose a unit");
    else if (!m_problem->text().isEmpty())
        state.clear();
    else if (!m_data.isComplete)
        state = tr("Reading...");
    else if (m_data.isEmpty)
        state = tr("Nothing was recorded in this time");
    else if (!m_data.silences.isEmpty())
        state = tr("Hatched: nothing was recorded");
    QStringList parts{m_data.toMs > 0 ? rangeText(m_data.fromMs, m_data.toMs) : QString(), state};
    parts.removeAll(QString());
    m_state->setText(parts.join(QStringLiteral("   ")));
    showPresent();
}
