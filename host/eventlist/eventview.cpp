#include "eventview.h"

#include "eventmodel.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

namespace {

constexpr int cellMargin = 26;
constexpr int markWidth = 22;
constexpr int rowPadding = 8;
constexpr int pagesAhead = 8;

} // namespace

EventView::EventView(EventModel& model, QWidget* parent)
    : QTableView(parent)
    , m_model(model)
{
    setObjectName(QStringLiteral("EventTable"));
    setAccessibleName(tr("Events, newest first"));
    setModel(&model);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle); // names often differ at their end
    setTabKeyNavigation(false);        // Tab leaves the table, the arrows move within it
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setUpColumns();
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &EventView::fetchAhead);
    connect(&model, &EventModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { keepPlace(first, last); });
}

void EventView::setUpColumns()
{
    const QFontMetrics metrics(font());
    const auto widthOf = [&](const QString& text) { return metrics.boundingRect(text).width() + cellMargin; };
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(metrics.height() + rowPadding);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(true);
    setColumnWidth(EventModel::KindColumn, widthOf(EventKinds::name(EventKinds::Command)) + markWidth);
    setColumnWidth(EventModel::TimeColumn, widthOf(QStringLiteral("2000-00-00 00:00:00")));
    setColumnWidth(EventModel::UnitColumn, widthOf(QStringLiteral("UPS-0000000000000000")));
    setColumnWidth(EventModel::CodeColumn, widthOf(QStringLiteral("00000")));
}

void EventView::setEmptyText(const QString& text)
{
    m_emptyText = text;
    viewport()->update();
}

void EventView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        copySelection();
    else
        QTableView::keyPressEvent(event);
}

void EventView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (m_model.rowCount() > 0 || m_emptyText.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(rowPadding, 0, -rowPadding, 0),
                     Qt::AlignCenter | Qt::TextWordWrap, m_emptyText);
}

// A scroll bar counts rows here. Pages come while the last ones are still below the visible part.
void EventView::fetchAhead(int firstVisibleRow)
{
    const QScrollBar& bar = *verticalScrollBar();
    if (bar.maximum() - firstVisibleRow < pagesAhead * bar.pageStep() && m_model.canFetchMore({}))
        m_model.fetchMore({});
}

void EventView::keepPlace(int first, int last)
{
    const int value = verticalScrollBar()->value();
    if (first > 0 || value == 0)
        return;
    updateGeometries(); // the bar's range comes before its value
    verticalScrollBar()->setValue(value + last - first + 1);
}

void EventView::copySelection() const
{
    QStringList lines;
    QItemSelection ranges = selectionModel()->selection();
    std::sort(ranges.begin(), ranges.end(), [](const auto& a, const auto& b) { return a.top() < b.top(); });
    for (const QItemSelectionRange& range : qAsConst(ranges)) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            QStringList fields;
            for (int column = 0; column < EventModel::ColumnCount; ++column)
                fields += m_model.index(row, column).data().toString();
            lines += fields.join(QLatin1Char('\t'));
        }
    }
    if (!lines.isEmpty())
        QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}
