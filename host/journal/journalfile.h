#pragma once

#include "connection.h"
#include "journalrecord.h"
#include "writerlock.h"

#include <QStringList>

#include <vector>

/// The file of a journal as its one writer sees it. Lives on the writer's thread. After a call that returned
/// false, problem() says why, and only close() or open() may follow.
class JournalFile
{
public:
    /// The headings belong to the columns of the data log; exports show them.
    JournalFile(const QString& file, const QStringList& logHeadings);

    /// Opens the file, creates it when there is none, brings an older one up to date, and closes the periods
    /// that a crash left open.
    bool open();
    void close();
    bool isOpen() const { return m_connection.isOpen(); }
    /// True when the open file no longer lies under its name, so that nobody would find what is written.
    bool isGone() const;

    /// Writes all records or none. A batch that was not written is given again, unchanged, before any other;
    /// when it turns out to have reached the file all the same, it is not written twice.
    bool write(const std::vector<JournalRecord>& batch);
    /// Deletes some rows that are older than utcMs; *hasMore says whether to call it again.
    bool prune(qint64 utcMs, bool* hasMore);

    /// Renames a damaged file. The new name, or an empty one when that failed. The file must be closed.
    QString moveAside();

    const FileProblem& problem() const { return m_problem; }

private:
    bool lock();
    bool prepareDatabase();
    bool checkContent();
    bool migrate(int fromVersion);
    bool beginRun();
    bool closeLeftOpen(qint64 utcMs);
    bool writeHeadings();
    bool prepareInserts();
    bool insert(const JournalEvent& event);
    bool insert(const CommunicationPeriod& period);
    bool insert(const LogRow& row);
    bool setAlive(int batches);
    bool check(bool isOk);
    bool fail(const FileProblem& problem);

    const QString m_file;
    const QStringList m_logHeadings;
    const QString m_run; // tells this run of the writer from others
    WriterLock m_lock;
    Connection m_connection;
    QSqlQuery m_insertEvent;
    QSqlQuery m_insertPeriod;
    QSqlQuery m_insertRow;
    FileProblem m_problem;
    quint64 m_device = 0; // with m_inode: which file is open
    quint64 m_inode = 0;
    int m_batchesWritten = 0; // by this run
    int m_batchesInFile = 0;  // as the open file says
};
