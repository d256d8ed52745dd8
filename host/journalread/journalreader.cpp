#include "journalreader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>

#include <sys/stat.h>

JournalReader::Opening JournalReader::ensureOpen()
{
    Identity identity;
    if (m_file.isEmpty())
        return fail(tr("No journal is kept: start the host with --journal FILE."));
    if (!identify(&identity))
        return fail(tr("There is no file %1: it is made when the host begins to write it.")
                        .arg(QDir::toNativeSeparators(m_file)));
    // A file that nobody wrote may have been opened as one that never changes: look again once somebody does.
    const bool isCurrent = identity == m_identity && (m_sawWriteAheadLog || !hasWriteAheadLog());
    if (m_connection.isOpen() && isCurrent)
        return Opening::Same;
    return open(identity);
}

JournalReader::Opening JournalReader::open(const Identity& identity)
{
    int version = 0;
    if (!Connection::isDriverAvailable())
        return fail(tr("The journal cannot be read: install libqt5sql5-sqlite."));
    if (!m_connection.open(m_file, Connection::Mode::ReadOnly) || !m_connection.checkIdentity(&version)) {
        fail(m_connection.problem());
        return Opening::Failed;
    }
    if (version == 0)
        return fail(tr("Nothing was written to %1 yet.").arg(QDir::toNativeSeparators(m_file)));
    const bool isSame = identity == m_identity;
    m_identity = identity;
    m_sawWriteAheadLog = hasWriteAheadLog();
    m_problem.clear();
    return isSame ? Opening::Same : Opening::Fresh;
}

bool JournalReader::read(const QString& statement, const QVariantList& values, const RowVisitor& visit)
{
    QSqlQuery query;
    if (!m_connection.prepare(statement, &query))
        return fail(m_connection.problem());
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!m_connection.execute(query))
        return fail(m_connection.problem());
    while (query.next())
        visit(query);
    const QSqlError error = query.lastError();
    return !error.isValid() || fail(fileproblem::from(error, m_file));
}

bool JournalReader::fail(const FileProblem& problem)
{
    const bool isDamaged = problem.kind == FileProblem::Kind::Damaged;
    const QString text = isDamaged ? tr("it is damaged (%1)").arg(problem.text) : problem.text;
    fail(tr("Journal %1: %2.").arg(QDir::toNativeSeparators(m_file), text));
    return false;
}

JournalReader::Opening JournalReader::fail(const QString& text)
{
    m_connection.close();
    m_problem = text;
    return Opening::Failed;
}

bool JournalReader::identify(Identity* identity) const
{
    struct stat status = {};
    if (::stat(QFile::encodeName(m_file).constData(), &status) != 0)
        return false;
    *identity = {status.st_dev, status.st_ino};
    return true;
}

bool JournalReader::hasWriteAheadLog() const
{
    return QFileInfo::exists(m_file + QStringLiteral("-wal"));
}
