#include "screen.h"

#include <QAbstractItemView>
#include <QDialog>
#include <QLabel>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QWindow>
#include <QtTest>

namespace {

QWidget* box(bool isForSetting)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        const bool hasPages = window->findChild<QStackedWidget*>() != nullptr;
        if (window->isVisible() && window->objectName() == QLatin1String("WhiteDialog") &&
            hasPages == isForSetting)
            return window;
    }
    return nullptr;
}

void scrollTo(QWidget* widget)
{
    for (QWidget* parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent))
            area->ensureWidgetVisible(widget);
    }
}

// There is no window manager that would give the keyboard to a box when it opens, or back when it closes.
QWidget* keyTarget()
{
    QWidget* window = QApplication::activeModalWidget() ? QApplication::activeModalWidget() : box(true);
    if (!window)
        window = screen::find<QWidget>("MainWindow");
    if (QApplication::activeWindow() != window)
        QApplication::setActiveWindow(window);
    return window->focusWidget() ? window->focusWidget() : window;
}

// Through the window: a box in front or a widget above gets it instead.
void clickAt(QWidget* widget, const QPoint& position, bool isDouble)
{
    scrollTo(widget);
    const QPoint place = widget->mapTo(widget->window(), position);
    QWindow* window = widget->window()->windowHandle();
    if (isDouble)
        QTest::mouseDClick(window, Qt::LeftButton, {}, place);
    else
        QTest::mouseClick(window, Qt::LeftButton, {}, place);
}

} // namespace

QString screen::unitText(int row)
{
    const auto* list = find<QAbstractItemView>("UnitList");
    return list ? list->model()->index(row, 0).data(Qt::AccessibleTextRole).toString() : QString();
}

QString screen::status()
{
    const auto* line = find<QLabel>("StatusLine");
    return line ? line->text() : QString();
}

QString screen::veil()
{
    const auto* title = find<QLabel>("VeilTitle");
    return title ? title->text() : QString();
}

QStringList screen::events()
{
    constexpr int textColumn = 4;
    QStringList texts;
    const auto* view = find<QAbstractItemView>("EventTable");
    for (int row = 0; view && row < view->model()->rowCount(); ++row)
        texts += view->model()->index(row, textColumn).data().toString();
    return texts;
}

QWidget* screen::settingDialog()
{
    return box(true);
}

QWidget* screen::messageBox()
{
    return box(false);
}

QString screen::setting(const char* table, int row)
{
    const auto* widget = find<QTableWidget>(table);
    return widget ? widget->item(row, 1)->text() : QString();
}

QString screen::describe()
{
    QStringList windows;
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (const QWidget* widget : widgets)
        windows += widget->isVisible() ? widget->objectName() : QString();
    windows.removeAll({});
    return QStringLiteral("units: %1 | status: %2 | veil: %3 | windows: %4 | events: %5")
        .arg(unitText(0), status(), veil(), windows.join(QLatin1Char(' ')),
             events().mid(0, 5).join(QStringLiteral("; ")));
}

void screen::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(keyTarget(), key, modifiers);
}

void screen::type(const QString& text)
{
    QTest::keyClicks(keyTarget(), text);
}

void screen::click(QWidget* widget)
{
    clickAt(widget, widget->rect().center(), false);
}

void screen::clickTab(const char* tabs, const char* title)
{
    QTabBar* bar = find<QTabWidget>(tabs)->tabBar();
    for (int i = 0; i < bar->count(); ++i) {
        if (bar->tabText(i) == QLatin1String(title))
            clickAt(bar, bar->tabRect(i).center(), false);
    }
}

void screen::doubleClickRow(const char* table, int row)
{
    auto* widget = find<QTableWidget>(table);
    widget->scrollToItem(widget->item(row, 0));
    clickAt(widget->viewport(), widget->visualItemRect(widget->item(row, 0)).center(), true);
}
