#pragma once

#include "eventfilter.h"
#include "eventrow.h"
#include "journalreader.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <atomic>

/// Reads events for one list, newest first: the newer ones as they arrive, the older ones page by page when
/// asked. Lives on a thread of its own, where all its slots and signals run; only expect() and cancel() are
/// for any thread.
///
/// Each order to begin has a number above 0, and what is read for it carries that number, so that a list can
/// drop what it no longer wants.
class EventReader : public QObject
{
    Q_OBJECT

public:
    explicit EventReader(const QString& journalFile);

    /// Says which order comes next: a search through many events for an earlier one ends at once.
    void expect(int order) { m_expectedOrder.store(order); }
    /// The same for all orders.
    void cancel() { expect(0); }

public slots:
    /// Reads what a filter lets through, from the newest event on.
    void begin(int order, const EventFilter& filter);
    /// Reads the next page of events older than beforeId, 0 for those that were read; it comes later when the
    /// journal is in trouble.
    void readOlder(int order, qint64 beforeId);

signals:
    /// A list begins: what it had is no longer so. The first page follows.
    void begun(int order);
    /// Newest first, and all newer than those before.
    void newerRead(int order, const EventRows& rows);
    /// Newest first, and all older than those before. Nothing is older when isEnd.
    void olderRead(int order, const EventRows& rows, bool isEnd);
    /// Every unit that has an event.
    void unitsRead(const QStringList& units);
    /// One line, empty when the journal can be read.
    void problemChanged(const QString& line);

private:
    struct IdRange
    {
        qint64 smallest = 0;
        qint64 largest = 0;
    };

    void look();
    bool lookAtAll();
    bool restart();
    bool readNewer();
    bool readOlderPage();
    bool readUnits();
    bool readIdRange(IdRange* range);
    bool select(qint64 fromId, qint64 toId, int maxCount, Qt::SortOrder order, EventRows* rows);
    bool isCancelled() const { return m_expectedOrder.load() != m_order; }
    void setProblem(const QString& line);

    JournalReader m_journal;
    QTimer m_timer;
    std::atomic_int m_expectedOrder{0};
    int m_order = 0;
    EventFilter m_filter;
    bool m_isBegun = false; // the list was told to begin with this order and file
    bool m_isOlderWanted = false;
    qint64 m_newestId = 0;  // all up to it were looked at
    qint64 m_oldestId = 0;  // all from it on were looked at
    qint64 m_unitsAtId = 0; // the newest event when the units were read
    QStringList m_units;
    QString m_problem;
};
