#pragma once

#include <QPoint>

class QString;
class QTabWidget;
class QTableWidget;
class QWidget;

/// What a user does with mouse and keyboard, as events of the widget in question. GUI thread.
namespace userinput {

/// Presses and releases the left button at a position within a widget.
void click(QWidget& widget, const QPoint& position);
/// The same in the middle of it.
void click(QWidget& widget);
void doubleClick(QWidget& widget, const QPoint& position);
/// Double-clicks a row in its first column, after scrolling to it.
void doubleClickRow(QTableWidget& table, int row);
/// Opens the tab that holds a widget; does nothing when none does.
void openTab(QTabWidget& tabs, const QWidget& content);
/// Types a text into a widget, over what is selected.
void type(QWidget& widget, const QString& text);

} // namespace userinput
