#pragma once

#include <QStyledItemDelegate>

struct UnitSummary;

/// Paints a row of the list of units: a mark in the colour of its state, name, state, load and number of
/// alarms. Colours only repeat what a text or a shape says.
class UnitDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

private:
    void paintGround(QPainter& painter, const QStyleOptionViewItem& option, const UnitSummary& summary) const;
    void paintName(QPainter& painter, const QStyleOptionViewItem& option, const QRect& line,
                   const UnitSummary& summary) const;
    void paintState(QPainter& painter, const QStyleOptionViewItem& option, const QRect& line,
                    const UnitSummary& summary) const;
};
