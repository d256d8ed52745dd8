#include "pagetabs.h"

#include <QStyle>
#include <QStyleOptionTabWidgetFrame>
#include <QTabBar>

PageTabs::PageTabs(QWidget* parent)
    : QTabWidget(parent)
{
    connect(this, &QTabWidget::currentChanged, this, [this] { updateGeometry(); });
}

QSize PageTabs::minimumSizeHint() const
{
    const QWidget* page = currentWidget();
    if (!page)
        return QTabWidget::minimumSizeHint();
    const QSize pageSize = page->minimumSizeHint().expandedTo(page->minimumSize());
    const QSize barSize = tabBar()->minimumSizeHint();
    QStyleOptionTabWidgetFrame option;
    initStyleOption(&option);
    return style()->sizeFromContents(
        QStyle::CT_TabWidget, &option,
        {qMax(pageSize.width(), barSize.width()), pageSize.height() + barSize.height()}, this);
}
