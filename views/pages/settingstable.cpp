#include "settingstable.h"

#include "displaytext.h"
#include "pagetext.h"

#include <QHeaderView>

namespace {
enum Column
{
    labelColumn,
    valueColumn,
    rangeColumn
};
constexpr int leastColumnWidth = 160; // px
} // namespace

SettingsTable::SettingsTable(const QString& name, QWidget* parent)
    : PageTable(name,
                {pageText(QT_TRANSLATE_NOOP("vek5View", "Parameter")),
                 pageText(QT_TRANSLATE_NOOP("vek5View", "Current settings")),
                 pageText(QT_TRANSLATE_NOOP("vek5View", "Range"))},
                parent)
{
    setSelectionMode(ExtendedSelection);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    horizontalHeader()->setSectionResizeMode(labelColumn, QHeaderView::ResizeToContents);
    horizontalHeader()->setMinimumSectionSize(leastColumnWidth);
}

void SettingsTable::setRecords(const QList<ParameterInformation*>& records)
{
    m_records = records;
    setRowCount(records.size());
    for (int row = 0; row < records.size(); ++row) {
        const ParameterInformation& record = *records.at(row);
        setItem(row, labelColumn, new QTableWidgetItem(record.label));
        setItem(row, valueColumn, new QTableWidgetItem(record.valueText));
        auto* range = new QTableWidgetItem(displaytext::range(record));
        range->setForeground(Qt::red);
        setItem(row, rangeColumn, range);
    }
}

void SettingsTable::refresh(const QMap<int, QVariant>& points)
{
    for (int row = 0; row < m_records.size(); ++row) {
        QTableWidgetItem* cell = item(row, valueColumn);
        const QString text = displaytext::value(*m_records.at(row), points);
        if (cell->text() != text)
            cell->setText(text);
        if (cell->foreground() != QBrush(Qt::blue))
            cell->setForeground(Qt::blue);
    }
}

void SettingsTable::showValueText(const ParameterInformation* record)
{
    for (int row = 0; row < m_records.size(); ++row) {
        if (m_records.at(row) == record)
            item(row, valueColumn)->setText(record->valueText);
    }
}
