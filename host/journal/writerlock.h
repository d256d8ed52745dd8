#pragma once

#include <QString>

/// Makes sure that one process at a time writes a journal. The system drops the lock when the process ends
/// in whatever way, so that no stale one is ever left.
///
/// A file of its own (the journal's name with ".lock"), which stays: a lock on the database file would get
/// in the way of the database's own.
class WriterLock
{
public:
    WriterLock() = default;
    ~WriterLock();
    Q_DISABLE_COPY(WriterLock)

    enum class Result
    {
        Taken,   ///< or held already
        InUse,   ///< another process has it
        NotMade, ///< the file cannot be created, errno says why
    };

    Result take(const QString& journalFile);

private:
    int m_descriptor = -1;
};
