#pragma once

#include "journalrecord.h"
#include "journalwriter.h"
#include "recordqueue.h"

#include <QMap>
#include <QMutex>

/// What a journal is to be.
struct JournalSettings
{
    QString file;            ///< created when there is none
    QStringList logHeadings; ///< of the data log's columns, for exports
    int keepDays = 0;        ///< older records are deleted; 0 keeps everything
};

/// Keeps what units tell, in a file that survives the end of the process at any moment: what was handed in
/// more than a second before is in it. Handing in never waits for the disk.
///
/// Records may come from any thread. One process at a time writes a file; anybody may read it meanwhile.
class Journal
{
public:
    /// Why the file cannot be a journal at all, in one line that names it; empty when it can, also when it is
    /// locked or damaged or its folder is missing: the journal deals with that while the host runs.
    static QString refusal(const QString& file);

    /// Starts writing. report gets the lines about trouble with the file, on the writer's thread.
    Journal(const JournalSettings& settings, JournalWriter::Report report);
    /// Ends the open periods and writes what waits; after a few seconds it gives up and says so.
    ~Journal();
    Q_DISABLE_COPY(Journal)

    void append(const JournalEvent& event) { m_queue.append(event); }
    void append(const LogRow& row) { m_queue.append(row); }

    /// The unit answers from now on. Nothing happens when it did before.
    void beginPeriod(const QString& unit, qint64 utcMs);
    /// The unit no longer answers. Nothing happens when it did not before.
    void endPeriod(const QString& unit, qint64 utcMs, PeriodEnding ending);

private:
    RecordQueue m_queue;
    QMutex m_lock;
    QMap<QString, qint64> m_openPeriods; // unit to beginning; under m_lock
    JournalWriter m_writer;
};
