#pragma once

#include "eventrow.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QMap>
#include <QTimer>

#include <deque>
#include <vector>

/// Events for a view, newest first: those that a reader has delivered so far. Asks for older ones when a
/// view wants more rows; never reads anything itself. GUI thread.
class EventModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        KindColumn,
        TimeColumn,
        UnitColumn,
        CodeColumn,
        TextColumn,
        ColumnCount
    };

    explicit EventModel(QObject* parent = nullptr);

    /// Empties the list; more events can be asked for once the first ones have come.
    void clear();
    /// rows are newest first, and newer than all that there are.
    void prepend(const EventRows& rows);
    /// rows are newest first, and older than all that there are. isEnd: no others are older.
    void append(const EventRows& rows, bool isEnd);

    /// Forgets older rows, which can be asked for again; not while they are being read.
    void trim(int keptCount);

    const EventRow& at(int row) const { return m_rows[static_cast<size_t>(row)]; }
    /// True when there are no other events than these.
    bool isComplete() const { return m_isEnd; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

signals:
    /// Answer with append(). beforeId is that of the last row, 0 when there is none.
    void olderWanted(qint64 beforeId);

private:
    void discardSome();
    QString textAt(const EventRow& row, int column) const;

    std::deque<EventRow> m_rows;                   // grows at both ends
    std::vector<std::deque<EventRow>> m_discarded; // freed bit by bit: so many texts take their time
    QTimer m_discardTimer;
    bool m_isWaiting = true; // for append()
    bool m_isEnd = false;
    QMap<EventKinds::Kind, QIcon> m_marks;
};
