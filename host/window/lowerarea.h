#pragma once

#include "requestwatch.h"

#include <QWidget>

class QLabel;
class QStackedWidget;
class QTabBar;

/// What lies below the pages: one of several widgets, chosen by a tab, and beside the tabs what became of the
/// user's last request. It can be pulled down to that row.
class LowerArea : public QWidget
{
    Q_OBJECT

public:
    explicit LowerArea(QWidget* parent = nullptr);

    /// Takes the content over; the number of its tab.
    int addTab(QWidget* content, const QString& title);
    int count() const;
    int current() const;
    void setCurrent(int tab);

    /// Shows a line with the present time until the next one comes.
    void tell(const QString& line, RequestWatch::Outcome outcome);

signals:
    void currentChanged(int tab);

private:
    QTabBar* m_tabs;
    QLabel* m_status;
    QStackedWidget* m_contents;
};
