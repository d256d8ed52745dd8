#pragma once

#include "parameterinformation.h"

#include <QLabel>
#include <QScrollArea>
#include <QVariant>

class QGridLayout;

/// The real-time data: six panels of captions and values, as many side by side as there is room for.
class RealtimePage : public QScrollArea
{
    Q_OBJECT

public:
    /// One panel; the records stay the caller's and must outlive the page.
    struct Panel
    {
        QString title;
        QList<ParameterInformation*> records;
    };

    explicit RealtimePage(QWidget* parent = nullptr);

    /// Fills the page, once; it should have its place among other widgets by then.
    void setPanels(const QList<Panel>& panels);

    /// Shows the values of a data map.
    void refresh(const QMap<int, QVariant>& points);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makePanel(const Panel& panel, QWidget* content);
    int widthOf(int columns) const;
    void arrange(int columns);

    QGridLayout* m_grid = nullptr; // once there are panels
    QList<QWidget*> m_panels;
    int m_columns = 0; // as arranged
    QList<ParameterInformation*> m_records;
    QList<QLabel*> m_values; // in the order of m_records
};
