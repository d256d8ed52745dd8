#include "energyline.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QTimer>
#include <QToolTip>

#include <algorithm>

using namespace flowgeometry;

namespace {

constexpr int tickMs = 100;
constexpr float offsetStep = 0.4F;
constexpr float leastOffset = -1000.0F;

} // namespace

Energyline::Energyline(QWidget* parent)
    : QWidget(parent)
    , m_timer(new QTimer(this))
{
    setMinimumSize(leastWidth, leastHeight);
    setMouseTracking(true);
    // Not by click: taking the focus repaints, and a click waits for the tick.
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_StyledBackground);
    setAccessibleName(tr("Energy flow"));
    findCentre();
    connect(m_timer, &QTimer::timeout, this, &Energyline::tick);
    m_timer->start(tickMs);
}

flowdata::Tables Energyline::textTables()
{
    using namespace flowtexts;
    flowdata::Tables tables;
    tables[StateTable] << tr("Abnormal") << tr("Normal");
    // Its third text is spelt that way on purpose: translations are looked up by it.
    tables[SupplyModeTable] << tr("No supply") << tr("Mains supply") << tr("Battery supply")
                            << tr("Conbined supply") << tr("Bypass supply");
    tables[PhaseConfigurationTable] << tr("Single-Single") << tr("Three-Single") << tr("Three-Three");
    tables[OutputModeTable] << tr("None") << tr("Load on bypass") << tr("Load on inverter")
                            << tr("Load on other");
    // Six states, and other words than the data log's five: deliberate.
    tables[BatteryStateTable] << tr("Disconnect") << tr("Standby") << tr("curr. equal charge")
                              << tr("volt. float charge") << tr("Discharge") << tr("volt. equal charge");
    tables[RectifierStateTable] << tr("Off") << tr("Soft start") << tr("PFC mode") << tr("Battery mode");
    tables[InverterStateTable] << tr("Off") << tr("Soft start") << tr("Normal run");
    return tables;
}

void Energyline::flushData(QMap<int, QVariant> values)
{
    const flowdata::Flows flows = flowdata::flows(values);
    flowdata::Texts texts = m_texts;
    flowdata::updateTexts(texts, values, m_tables);
    const int chargePercent = flowdata::chargePercent(values);
    if (flows == m_flows && texts == m_texts && chargePercent == m_chargePercent)
        return;
    if (texts[flowtexts::SupplyMode] != m_texts[flowtexts::SupplyMode])
        setAccessibleDescription(texts[flowtexts::SupplyMode]);
    m_flows = flows;
    m_texts = texts;
    m_chargePercent = chargePercent;
    m_isChanged = true;
}

void Energyline::set_all_off_Flow()
{
    m_flows.fill(false);
    m_isChanged = true;
}

void Energyline::toggle_view_Flag(bool& flag)
{
    flag = !flag;
    m_isChanged = true;
}

void Energyline::tick()
{
    m_flowOffset -= offsetStep;
    if (m_isChanged) {
        m_isChanged = false;
        update();
    } else if (std::find(m_flows.begin(), m_flows.end(), true) != m_flows.end()) {
        update(flowRegion());
    }
    if (m_flowOffset < leastOffset)
        m_flowOffset = 0;
}

void Energyline::findCentre()
{
    const QRect area = rect();
    m_centreX = (area.right() - area.left() + 1) / 2; // whole pixels, so that lines stay sharp
    m_centreY = (area.bottom() - area.top() + 1) / 2;
}

int Energyline::blockAt(const QPoint& position) const
{
    const QPointF fromCentre = position - QPointF(m_centreX, m_centreY);
    for (int i = 0; i < blockCount; ++i) {
        if (blocks[i].box.contains(fromCentre)) // edges included
            return i;
    }
    return -1;
}

bool Energyline::isOpen(const Block& block) const
{
    return m_views[block.views[0]] || m_views[block.views[1]];
}

void Energyline::toggleBlock(int block)
{
    const View first = blocks[block].views[0];
    const View second = blocks[block].views[1];
    toggle_view_Flag(m_views[first]);
    if (second != first)
        toggle_view_Flag(m_views[second]);
}

void Energyline::chooseBlock(int block)
{
    m_chosenBlock = block;
    update();
}

QString Energyline::toolTipText(int block) const
{
    const Block& row = blocks[block];
    QString text = tr(row.name);
    if (row.status != flowtexts::textCount && !m_texts[row.status].isEmpty())
        text += QStringLiteral(": ") + m_texts[row.status];
    return text + QLatin1Char('\n') +
           (isOpen(row) ? tr("Click to hide the values") : tr("Click to show the values"));
}

bool Energyline::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const int block = blockAt(help->pos());
    if (block < 0)
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), toolTipText(block), this);
    return true;
}

void Energyline::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        m_base = QPixmap();
        m_isChanged = true;
    }
    QWidget::changeEvent(event);
}

void Energyline::focusInEvent(QFocusEvent* event)
{
    const bool isByTab = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByTab)
        chooseBlock(event->reason() == Qt::TabFocusReason ? 0 : blockCount - 1);
}

void Energyline::focusOutEvent(QFocusEvent*)
{
    chooseBlock(-1);
}

void Energyline::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Right:
    case Qt::Key_Down:
        chooseBlock((m_chosenBlock + 1) % blockCount);
        break;
    case Qt::Key_Left:
    case Qt::Key_Up:
        chooseBlock(m_chosenBlock <= 0 ? blockCount - 1 : m_chosenBlock - 1);
        break;
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_chosenBlock >= 0)
            toggleBlock(m_chosenBlock);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void Energyline::mouseMoveEvent(QMouseEvent* event)
{
    findCentre();
    const Qt::CursorShape shape = blockAt(event->pos()) < 0 ? Qt::ArrowCursor : Qt::PointingHandCursor;
    if (cursor().shape() != shape)
        setCursor(shape);
}

void Energyline::mousePressEvent(QMouseEvent* event)
{
    findCentre();
    const int block = blockAt(event->pos());
    if (block < 0)
        event->ignore();
    else
        toggleBlock(block);
}

void Energyline::paintEvent(QPaintEvent* event)
{
    findCentre();
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    // Most pictures only move the dashes: panels outside are then not even laid out.
    painter.setClipRegion(event->region());
    drawBase(&painter);
    drawBattery(&painter);
    drawflow(&painter);
    drawdate(&painter);
}
