#include "connection.h"

#include "schema.h"

#include <QFileInfo>
#include <QSqlError>
#include <QUrl>
#include <QUuid>
#include <QVariant>

namespace {
const auto driverName = QLatin1String("QSQLITE");

// Long enough for a backup to copy a page, short enough for a stop not to be held up.
const auto busyTimeout = QLatin1String("QSQLITE_BUSY_TIMEOUT=500");
} // namespace

bool Connection::isDriverAvailable()
{
    return QSqlDatabase::isDriverAvailable(driverName);
}

Connection::~Connection()
{
    close();
}

bool Connection::open(const QString& file, Mode mode)
{
    close();
    m_file = file;
    if (mode == Mode::ReadWrite)
        return openDatabase(file, busyTimeout);

    QVariant ignored;
    const QString options = busyTimeout + QStringLiteral(";QSQLITE_OPEN_READONLY");
    if (openDatabase(file, options) && read(QStringLiteral("SELECT count(*) FROM sqlite_master"), &ignored))
        return true;
    if (QFileInfo::exists(file + QStringLiteral("-wal")) || QFileInfo(QFileInfo(file).path()).isWritable())
        return false;
    // Nobody writes the file, and this user may not create the small files that show it to writers: that
    // is how the file of a stopped service looks to everybody else.
    QUrl url = QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath());
    url.setQuery(QStringLiteral("immutable=1"));
    return openDatabase(url.toString(QUrl::FullyEncoded), options + QStringLiteral(";QSQLITE_OPEN_URI"));
}

bool Connection::openDatabase(const QString& name, const QString& options)
{
    close();
    m_database = QSqlDatabase::addDatabase(driverName, QUuid::createUuid().toString());
    m_database.setDatabaseName(name);
    m_database.setConnectOptions(options);
    return m_database.open() || fail(m_database.lastError());
}

void Connection::close()
{
    const QString name = m_database.connectionName();
    m_database.close();
    m_database = QSqlDatabase(); // the last reference: the connection cannot be removed before
    if (!name.isEmpty())
        QSqlDatabase::removeDatabase(name);
}

bool Connection::execute(const QString& statement)
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.exec(statement))
        return fail(query.lastError());
    while (query.next()) {
    }
    return !query.lastError().isValid() || fail(query.lastError());
}

bool Connection::execute(QSqlQuery& query)
{
    return query.exec() || fail(query.lastError());
}

bool Connection::read(const QString& statement, QVariant* value)
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.exec(statement) || !query.next())
        return fail(query.lastError());
    *value = query.value(0);
    return true;
}

bool Connection::prepare(const QString& statement, QSqlQuery* query)
{
    *query = QSqlQuery(m_database);
    query->setForwardOnly(true);
    return query->prepare(statement) || fail(query->lastError());
}

bool Connection::checkIdentity(int* version)
{
    QVariant applicationId;
    QVariant userVersion;
    QVariant tableCount;
    if (!read(QStringLiteral("PRAGMA application_id"), &applicationId) ||
        !read(QStringLiteral("PRAGMA user_version"), &userVersion) ||
        !read(QStringLiteral("SELECT count(*) FROM sqlite_master"), &tableCount))
        return false;
    *version = userVersion.toInt();
    if (applicationId.toInt() != schema::applicationId && (tableCount.toInt() > 0 || *version != 0))
        return refuse(QStringLiteral("it is a database of another program: name another file"));
    if (*version > schema::version)
        return refuse(QStringLiteral("it was written by a newer version of this program (format %1, this "
                                     "one knows %2): use that version or name another file")
                          .arg(*version)
                          .arg(schema::version));
    return true;
}

bool Connection::fail(const QSqlError& error)
{
    m_problem = fileproblem::from(error, m_file);
    return false;
}

bool Connection::refuse(const QString& text)
{
    m_problem = {FileProblem::Kind::Refused, text};
    return false;
}
