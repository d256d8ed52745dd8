#pragma once

#include "connection.h"

#include <QCoreApplication>
#include <QVariantList>

#include <functional>

/// A journal's file as one of its readers sees it: opened when it is there, again after trouble, and anew
/// when the writer has begun another file under the same name. Belongs to the thread that first opens it.
class JournalReader
{
    Q_DECLARE_TR_FUNCTIONS(JournalReader)

public:
    enum class Opening
    {
        Failed, ///< problem() says why; try again later
        Same,   ///< what was read before still holds
        Fresh   ///< nothing that was read before holds
    };

    explicit JournalReader(const QString& file)
        : m_file(file)
    {}

    /// Cheap when nothing has changed: call it before every look at the file.
    Opening ensureOpen();
    using RowVisitor = std::function<void(const QSqlQuery& row)>;
    /// Shows every row of a statement. After false, problem() says why, the file is closed, what was read
    /// still holds, and only ensureOpen() may follow.
    bool read(const QString& statement, const QVariantList& values, const RowVisitor& visit);

    /// One line that names the file; empty after success.
    const QString& problem() const { return m_problem; }

private:
    struct Identity
    {
        quint64 device = 0;
        quint64 inode = 0;
        bool operator==(const Identity& other) const
        {
            return device == other.device && inode == other.inode;
        }
    };

    bool identify(Identity* identity) const;
    bool hasWriteAheadLog() const;
    Opening open(const Identity& identity);
    Opening fail(const QString& text);
    bool fail(const FileProblem& problem);

    const QString m_file;
    Connection m_connection;
    Identity m_identity; // of the file that was read last
    bool m_sawWriteAheadLog = false;
    QString m_problem;
};
