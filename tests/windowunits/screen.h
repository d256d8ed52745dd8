#pragma once

#include <QApplication>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QWidget>

class QTableWidget;
class QTabWidget;

/// What a person sees of the program, and the keys and the mouse. GUI thread.
namespace screen {

/// The visible widget of this type and object name; null when there is none.
template <typename Widget>
Widget* find(const char* name)
{
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        auto* found = qobject_cast<Widget*>(widget);
        if (found && found->isVisible() && found->objectName() == QLatin1String(name))
            return found;
    }
    return nullptr;
}

/// A row of the list of units as it is read out; empty when there is none.
QString unitText(int row);
QString status();
/// What lies over the pages; empty while they show live values.
QString veil();
/// The texts of the event list, newest first.
QStringList events();
/// The dialog for a setting, and a question or notice; null unless open.
QWidget* settingDialog();
QWidget* messageBox();
/// The present text of a setting in its table, when that is shown.
QString setting(const char* table, int row);
/// All of it, for whoever looks for something in vain.
QString describe();

/// A key goes to where the keyboard is.
void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
void type(const QString& text);
/// The mouse meets what lies uppermost at a place. Scrolls there first; events are handled meanwhile.
void click(QWidget* widget);
void clickTab(const char* tabs, const char* title);
void doubleClickRow(const char* table, int row);

} // namespace screen
