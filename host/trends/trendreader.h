#pragma once

#include "journalreader.h"
#include "loadedtrend.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <atomic>

/// Reads a unit's data log for one plot window and thins it; goes on as rows arrive. Lives on a thread of
/// its own, where all its slots and signals run; only expect() and cancel() are for any thread.
///
/// Each order has a number above 0, and what is read for it carries that number.
class TrendReader : public QObject
{
    Q_OBJECT

public:
    explicit TrendReader(const QString& journalFile);

    /// Says which order comes next: what is being read for an earlier one ends soon.
    void expect(int order) { m_expectedOrder.store(order); }
    /// The same for all orders.
    void cancel() { expect(0); }

public slots:
    void read(int order, const TrendRequest& request);
    /// Paused, new rows are read when it ends. Paused at first.
    void setPaused(bool isPaused);

signals:
    void dataRead(int order, const TrendData& data);
    /// One line, empty when the journal can be read.
    void problemChanged(const QString& line);

private:
    void look();
    bool load();
    bool follow();
    bool readPeriods();
    bool readNewestId();
    bool readRows(const QString& condition, const QVariantList& values);
    bool readSpan(qint64 fromMs);
    void send(bool isComplete);
    qint64 endMs() const;
    qint64 sliceMs() const;
    bool isCancelled() const { return m_expectedOrder.load() != m_order; }

    JournalReader m_journal;
    QTimer m_timer;
    std::atomic_int m_expectedOrder{0};
    int m_order = 0;
    TrendRequest m_request;
    LoadedTrend m_trend;
    bool m_isLoaded = false;
    qint64 m_newestId = 0; // of the data log, when it was looked at last
    qint64 m_sentToMs = 0;
    QElapsedTimer m_sinceSent;
    QString m_problem;
};
