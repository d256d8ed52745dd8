#pragma once

#include <QTableWidget>

/// A table to read: whole rows are selected, Ctrl+C copies them as tab-separated text, nothing is edited in
/// place, and Return on a row counts as a double click.
class PageTable : public QTableWidget
{
    Q_OBJECT

public:
    PageTable(const QString& name, const QStringList& headings, QWidget* parent = nullptr);

    /// The selected rows as text, one line each, cells separated by tabs.
    QString selectedText() const;
    /// Scrolls by so many rows, disabled or not.
    void scrollRows(int count);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
