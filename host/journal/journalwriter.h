#pragma once

#include "journalfile.h"
#include "recordqueue.h"

#include <QDeadlineTimer>
#include <QSemaphore>
#include <QThread>

#include <functional>

/// Writes the records of a queue to a journal's file, in batches, a few times a second. Whatever is wrong
/// with the file, the records stay in the queue, one line says so, and the writer tries again.
class JournalWriter : public QThread
{
public:
    using Report = std::function<void(const QString& line)>;

    /// keepDays 0 keeps everything. The queue must outlive the thread; report is called on it.
    JournalWriter(const QString& file, const QStringList& logHeadings, int keepDays, RecordQueue& queue,
                  Report report);

    /// Ends the thread once everything is written, or after a short time when that is not possible. Returns
    /// at once.
    void requestStop() { m_stop.release(); }

protected:
    void run() override;

private:
    bool work(JournalFile& file);
    bool ensureOpen(JournalFile& file);
    bool writeWaiting(JournalFile& file);
    bool pruneOld(JournalFile& file);
    void workOrWait(JournalFile& file);
    void finish(JournalFile& file);
    void takeTrouble(JournalFile& file);
    void replaceDamaged(JournalFile& file);
    void reportTrouble(const FileProblem& problem);
    void reportRecovery(size_t writtenCount);
    void reportDropped();
    void say(const QString& text) const;
    size_t waitingCount() const { return m_queue.size() + m_batch.size(); }

    const QString m_file;
    const QStringList m_logHeadings;
    const int m_keepDays;
    RecordQueue& m_queue;
    const Report m_report;
    QSemaphore m_stop;

    // The rest belongs to the thread.
    std::vector<JournalRecord> m_batch; // taken from the queue and not yet known to be written
    size_t m_droppedCount = 0;          // since the trouble began
    bool m_isInTrouble = false;
    QString m_troubleText;
    QDeadlineTimer m_nextTry;
    QDeadlineTimer m_nextReminder;
    qint64 m_reminderPauseMs = 0;
    QDeadlineTimer m_nextReplacement;
    QDeadlineTimer m_nextAliveMark;
    QDeadlineTimer m_nextPrune;
};
