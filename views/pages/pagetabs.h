#pragma once

#include <QTabWidget>

/// Tabs that ask for the room of the page that is open, not of the largest: a page that needs more than there
/// is makes no other page scroll.
class PageTabs : public QTabWidget
{
    Q_OBJECT

public:
    explicit PageTabs(QWidget* parent = nullptr);
    QSize minimumSizeHint() const override;
};
