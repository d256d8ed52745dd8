#include "pagetable.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace {

// Values keep their order in hosts that run from right to left: "-10%" must not read "10%-".
class PageDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (option->direction == Qt::LeftToRight || option->text.isRightToLeft())
            return;
        option->displayAlignment = QStyle::visualAlignment(option->direction, option->displayAlignment);
        option->direction = Qt::LeftToRight;
    }
};

// The texts have colours of their own, made for a light ground: dark themes get one, too, and whoever may not
// use a table can still read it. A host's style sheet comes before this.
QPalette lightGround(QPalette palette)
{
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(245, 246, 252));
    palette.setColor(QPalette::Text, Qt::black);
    return palette;
}

} // namespace

PageTable::PageTable(const QString& name, const QStringList& headings, QWidget* parent)
    : QTableWidget(0, headings.size(), parent)
{
    setObjectName(name);
    setPalette(lightGround(palette()));
    setItemDelegate(new PageDelegate(this));
    setHorizontalHeaderLabels(headings);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setAlternatingRowColors(true);
    setVerticalScrollMode(ScrollPerItem);
    setWordWrap(false);
    setTabKeyNavigation(false); // the tab key leads on to what follows the table
    verticalHeader()->hide();
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

QString PageTable::selectedText() const
{
    QStringList lines;
    for (int row = 0; row < rowCount(); ++row) {
        if (!selectionModel()->isRowSelected(row, QModelIndex()))
            continue;
        QStringList cells;
        for (int column = 0; column < columnCount(); ++column)
            cells << (item(row, column) ? item(row, column)->text() : QString());
        lines << cells.join(QLatin1Char('\t'));
    }
    return lines.join(QLatin1Char('\n'));
}

void PageTable::scrollRows(int count)
{
    // The bar counts in rows: items scroll one by one.
    verticalScrollBar()->setValue(verticalScrollBar()->value() + count);
}

void PageTable::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        const QString text = selectedText();
        if (!text.isEmpty())
            QApplication::clipboard()->setText(text);
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentRow() >= 0) {
        emit cellDoubleClicked(currentRow(), currentColumn());
    } else {
        QTableWidget::keyPressEvent(event);
    }
}
