#pragma once

#include <QTableView>

class EventModel;

/// The table of an event list. Stays at the newest event while it shows that, otherwise at what the user
/// looks at; asks for older events before the last one comes into sight; copies the selected events.
class EventView : public QTableView
{
    Q_OBJECT

public:
    /// The model must outlive the view.
    explicit EventView(EventModel& model, QWidget* parent = nullptr);

    /// Shown in place of events while there are none.
    void setEmptyText(const QString& text);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setUpColumns();
    void fetchAhead(int firstVisibleRow);
    void keepPlace(int first, int last);
    void copySelection() const;

    EventModel& m_model;
    QString m_emptyText;
};
