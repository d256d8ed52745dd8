#pragma once

#include "eventfilter.h"
#include "eventmodel.h"
#include "eventreader.h"
#include "exportjob.h"
#include "readerthread.h"

#include <QWidget>

class EventView;
class QComboBox;
class QLabel;
class QPushButton;

/// The events of a journal, newest first, by unit and kind. New ones appear as the host writes them, older
/// ones are read as the user scrolls; a journal of any size opens at once. The file is read on a thread of
/// this widget, exports on another; its end waits for both.
class EventList : public QWidget
{
    Q_OBJECT

public:
    /// An empty name says that no journal is kept; a file may also come into being later.
    explicit EventList(const QString& journalFile, QWidget* parent = nullptr);
    ~EventList() override;

    /// Shows one unit's events, those of all units when empty. A unit without events may be named.
    void setUnit(const QString& unit);
    const QString& unit() const { return m_filter.unit; }
    /// Shows some kinds only; a set that the user could not choose is refused.
    void setKinds(EventKinds::Set kinds);
    /// Whether the oldest event of the choice has been read.
    bool isComplete() const { return m_begunOrder == m_order && m_model.isComplete(); }
    EventKinds::Set kinds() const { return m_filter.kinds; }

    /// Writes every event of the chosen unit and kinds, shown or not, to a CSV file. Returns at once; a line
    /// in the widget tells how it ended. Nothing happens while another export runs.
    void exportTo(const QString& targetFile);
    bool isExporting() const { return m_job != nullptr; }

signals:
    /// The user chose another unit or other kinds.
    void filterChanged();
    /// The user double-clicked an event or pressed Enter on it.
    void eventActivated(const QString& unit, qint64 utcMs);
    // To the reader, on its thread.
    void beginWanted(int order, const EventFilter& filter);
    void olderWanted(int order, qint64 beforeId);

private:
    void makeControls();
    void layOut();
    void connectReader();
    void connectControls();
    void restart();
    void takeNewer(const EventRows& rows);
    void showUnits(const QStringList& units);
    void selectUnit();
    void showProblem(const QString& line);
    void showNotice(const QString& line);
    void showCount();
    void askAndExport();
    void finishExport();

    const QString m_journalFile;
    EventFilter m_filter;
    int m_order = 0;      // what comes for an earlier one is dropped
    int m_begunOrder = 0; // the one that the rows belong to
    EventModel m_model;
    QComboBox* m_units = nullptr;
    QComboBox* m_kinds = nullptr;
    QLabel* m_count = nullptr;
    QPushButton* m_export = nullptr;
    EventView* m_view = nullptr;
    QLabel* m_problem = nullptr;
    QLabel* m_notice = nullptr;
    ExportJob* m_job = nullptr;         // while an export runs
    ReaderThread<EventReader> m_thread; // ends first: nothing is delivered to a half-deleted widget
};
