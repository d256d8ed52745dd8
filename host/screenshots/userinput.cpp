#include "userinput.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>

namespace {

void send(QWidget& widget, QEvent::Type type, const QPoint& position)
{
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, position, widget.mapTo(widget.window(), position), widget.mapToGlobal(position),
                      Qt::LeftButton, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

} // namespace

void userinput::click(QWidget& widget, const QPoint& position)
{
    send(widget, QEvent::MouseButtonPress, position);
    send(widget, QEvent::MouseButtonRelease, position);
}

void userinput::click(QWidget& widget)
{
    click(widget, widget.rect().center());
}

void userinput::doubleClick(QWidget& widget, const QPoint& position)
{
    click(widget, position);
    send(widget, QEvent::MouseButtonDblClick, position);
    send(widget, QEvent::MouseButtonRelease, position);
}

void userinput::doubleClickRow(QTableWidget& table, int row)
{
    QTableWidgetItem* cell = table.item(row, 0);
    table.scrollToItem(cell);
    doubleClick(*table.viewport(), table.visualItemRect(cell).center());
}

void userinput::openTab(QTabWidget& tabs, const QWidget& content)
{
    for (int i = 0; i < tabs.count(); ++i) {
        const QWidget* page = tabs.widget(i);
        if (page == &content || page->isAncestorOf(&content))
            click(*tabs.tabBar(), tabs.tabBar()->tabRect(i).center());
    }
}

void userinput::type(QWidget& widget, const QString& text)
{
    for (const QChar character : text) {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, 0, Qt::NoModifier, QString(character));
            QCoreApplication::sendEvent(&widget, &event);
        }
    }
}
