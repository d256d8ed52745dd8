#include "journalfile.h"

#include "schema.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <QVariant>

#include <cerrno>
#include <iterator>

#include <sys/stat.h>

namespace {

constexpr int logColumnCount = static_cast<int>(std::size(schema::logColumns));
constexpr qint64 fullCheckLimitBytes = 64LL * 1024 * 1024; // read in less than a second
constexpr int pruneRows = 2000;
constexpr int prunePages = 1024;

// The settings of a connection. The sizes are in bytes.
constexpr const char* connectionSettings[] = {
    "PRAGMA journal_mode = WAL",
    // Every batch reaches the disk: the events just before the machine itself goes dark matter most.
    "PRAGMA synchronous = FULL",
    "PRAGMA journal_size_limit = 4194304",
};

QString sql(const char* text)
{
    return QString::fromLatin1(text);
}

template <typename T>
QVariant orNull(const std::optional<T>& value)
{
    return value ? QVariant(*value) : QVariant();
}

// An absent text would be stored as no value at all.
QString notNull(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

QVariant endingText(PeriodEnding ending)
{
    switch (ending) {
    case PeriodEnding::Lost:
        return QStringLiteral("lost");
    case PeriodEnding::Stopped:
        return QStringLiteral("stopped");
    case PeriodEnding::Open:
        break;
    }
    return {};
}

QString insertRowStatement()
{
    QString columns;
    QString marks;
    for (const char* column : schema::logColumns) {
        columns += QStringLiteral(", ") + QLatin1String(column);
        marks += QStringLiteral(", ?");
    }
    return QStringLiteral("INSERT INTO data_log (time_ms, unit") + columns +
           QStringLiteral(") VALUES (?, ?") + marks + QLatin1Char(')');
}

bool identify(const QString& file, quint64* device, quint64* inode)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(file).constData(), &status) != 0)
        return false;
    *device = status.st_dev;
    *inode = status.st_ino;
    return true;
}

} // namespace

JournalFile::JournalFile(const QString& file, const QStringList& logHeadings)
    : m_file(file)
    , m_logHeadings(logHeadings)
    , m_run(QUuid::createUuid().toString())
{}

bool JournalFile::open()
{
    close();
    if (lock() && check(m_connection.open(m_file, Connection::Mode::ReadWrite)) && prepareDatabase() &&
        beginRun() && prepareInserts()) {
        identify(m_file, &m_device, &m_inode);
        return true;
    }
    close();
    return false;
}

void JournalFile::close()
{
    for (QSqlQuery* query : {&m_insertEvent, &m_insertPeriod, &m_insertRow})
        *query = QSqlQuery(); // they hold on to the connection
    m_connection.close();
}

bool JournalFile::isGone() const
{
    quint64 device = 0;
    quint64 inode = 0;
    return !identify(m_file, &device, &inode) || device != m_device || inode != m_inode;
}

bool JournalFile::lock()
{
    switch (m_lock.take(m_file)) {
    case WriterLock::Result::Taken:
        return true;
    case WriterLock::Result::InUse:
        return fail({FileProblem::Kind::Passing,
                     QStringLiteral("another host writes it: end that one or name another file")});
    case WriterLock::Result::NotMade:
        break;
    }
    const int error = errno;
    const QString lock = m_file + QStringLiteral(".lock");
    if (!QFileInfo::exists(lock))
        return fail(fileproblem::fromSystem(error, m_file));
    return fail({FileProblem::Kind::Passing,
                 QStringLiteral("its lock %1 cannot be opened: %2: check its permissions, or remove it")
                     .arg(lock, qt_error_string(error))});
}

bool JournalFile::prepareDatabase()
{
    int version = 0;
    if (!check(m_connection.checkIdentity(&version)) || !checkContent())
        return false;
    // Only an empty file takes this, and it has to be the first.
    if (version == 0 && !check(m_connection.execute(QStringLiteral("PRAGMA auto_vacuum = INCREMENTAL"))))
        return false;
    for (const char* setting : connectionSettings) {
        if (!check(m_connection.execute(sql(setting))))
            return false;
    }
    return version == schema::version || migrate(version);
}

// A damaged page that nothing touches for months would spoil the day it is needed. A large file would take
// too long; there the damage is noticed where it is met.
bool JournalFile::checkContent()
{
    if (QFileInfo(m_file).size() > fullCheckLimitBytes)
        return true;
    QVariant verdict;
    if (!check(m_connection.read(QStringLiteral("PRAGMA quick_check(1)"), &verdict)))
        return false;
    if (verdict.toString() == QLatin1String("ok"))
        return true;
    return fail({FileProblem::Kind::Damaged, verdict.toString().simplified()});
}

bool JournalFile::migrate(int fromVersion)
{
    if (!check(m_connection.begin()))
        return false;
    for (int version = fromVersion; version < schema::version; ++version) {
        const schema::Step& step = schema::steps[version];
        for (int i = 0; i < step.count; ++i) {
            if (!check(m_connection.execute(sql(step.statements[i]))))
                return false;
        }
    }
    return check(m_connection.execute(QStringLiteral("PRAGMA user_version = %1").arg(schema::version)) &&
                 m_connection.commit());
}

// A run may open its file more than once, after an error; what it begins, it begins at the first time.
bool JournalFile::beginRun()
{
    QVariant run;
    QVariant batches;
    QVariant aliveMs;
    if (!check(m_connection.begin() && m_connection.read(QStringLiteral("SELECT run FROM writer"), &run) &&
               m_connection.read(QStringLiteral("SELECT batches FROM writer"), &batches) &&
               m_connection.read(QStringLiteral("SELECT alive_ms FROM writer"), &aliveMs)))
        return false;
    m_batchesInFile = batches.toInt();
    if (run.toString() != m_run) {
        if (!closeLeftOpen(aliveMs.toLongLong()) || !writeHeadings() || !setAlive(m_batchesWritten))
            return false;
        m_batchesInFile = m_batchesWritten;
    }
    return check(m_connection.commit());
}

bool JournalFile::closeLeftOpen(qint64 utcMs)
{
    QSqlQuery update;
    if (!check(m_connection.prepare(QStringLiteral("UPDATE period SET to_ms = max(from_ms, ?), ending = "
                                                   "'interrupted' WHERE to_ms IS NULL"),
                                    &update)))
        return false;
    update.addBindValue(utcMs);
    return check(m_connection.execute(update));
}

bool JournalFile::writeHeadings()
{
    QSqlQuery insert;
    if (!check(m_connection.execute(QStringLiteral("DELETE FROM data_log_heading")) &&
               m_connection.prepare(QStringLiteral("INSERT INTO data_log_heading VALUES (?, ?)"), &insert)))
        return false;
    for (int i = 0; i < logColumnCount; ++i) {
        insert.addBindValue(i);
        insert.addBindValue(m_logHeadings.value(i, sql(schema::logColumns[i])));
        if (!check(m_connection.execute(insert)))
            return false;
    }
    return true;
}

bool JournalFile::prepareInserts()
{
    return check(
        m_connection.prepare(
            QStringLiteral("INSERT INTO event (time_ms, unit, type, code, text, state, record)"
                           " VALUES (?, ?, ?, ?, ?, ?, ?)"),
            &m_insertEvent) &&
        m_connection.prepare(QStringLiteral("INSERT OR REPLACE INTO period (unit, from_ms, to_ms, ending)"
                                            " VALUES (?, ?, ?, ?)"),
                             &m_insertPeriod) &&
        m_connection.prepare(insertRowStatement(), &m_insertRow));
}

bool JournalFile::write(const std::vector<JournalRecord>& batch)
{
    const int number = m_batchesWritten + 1;
    // An error at the very end of a transaction may come after the records have reached the file.
    if (m_batchesInFile < number) {
        if (!check(m_connection.begin()))
            return false;
        for (const JournalRecord& record : batch) {
            if (!std::visit([this](const auto& content) { return insert(content); }, record))
                return false;
        }
        if (!setAlive(number) || !check(m_connection.commit()))
            return false;
    }
    m_batchesWritten = m_batchesInFile = number;
    return true;
}

bool JournalFile::insert(const JournalEvent& event)
{
    m_insertEvent.addBindValue(event.utcMs);
    m_insertEvent.addBindValue(event.unit);
    m_insertEvent.addBindValue(event.type);
    m_insertEvent.addBindValue(orNull(event.code));
    m_insertEvent.addBindValue(notNull(event.text));
    m_insertEvent.addBindValue(orNull(event.state));
    m_insertEvent.addBindValue(notNull(QString::fromUtf8(event.recordJson)));
    return check(m_connection.execute(m_insertEvent));
}

bool JournalFile::insert(const CommunicationPeriod& period)
{
    m_insertPeriod.addBindValue(period.unit);
    m_insertPeriod.addBindValue(period.fromUtcMs);
    m_insertPeriod.addBindValue(orNull(period.toUtcMs));
    m_insertPeriod.addBindValue(endingText(period.ending));
    return check(m_connection.execute(m_insertPeriod));
}

bool JournalFile::insert(const LogRow& row)
{
    m_insertRow.addBindValue(row.utcMs);
    m_insertRow.addBindValue(row.unit);
    for (int i = 0; i < logColumnCount; ++i)
        m_insertRow.addBindValue(notNull(row.values.value(i)));
    return check(m_connection.execute(m_insertRow));
}

bool JournalFile::setAlive(int batches)
{
    QSqlQuery update;
    if (!check(m_connection.prepare(QStringLiteral("UPDATE writer SET alive_ms = ?, run = ?, batches = ?"),
                                    &update)))
        return false;
    update.addBindValue(QDateTime::currentMSecsSinceEpoch());
    update.addBindValue(m_run);
    update.addBindValue(batches);
    return check(m_connection.execute(update));
}

bool JournalFile::prune(qint64 utcMs, bool* hasMore)
{
    static constexpr const char* statements[] = {
        "DELETE FROM event WHERE id IN (SELECT id FROM event WHERE time_ms < ? LIMIT ?)",
        "DELETE FROM data_log WHERE id IN (SELECT id FROM data_log WHERE time_ms < ? LIMIT ?)",
        "DELETE FROM period WHERE rowid IN (SELECT rowid FROM period WHERE to_ms < ? LIMIT ?)",
    };
    *hasMore = false;
    if (!check(m_connection.begin()))
        return false;
    for (const char* statement : statements) {
        QSqlQuery query;
        if (!check(m_connection.prepare(sql(statement), &query)))
            return false;
        query.addBindValue(utcMs);
        query.addBindValue(pruneRows);
        if (!check(m_connection.execute(query)))
            return false;
        *hasMore = *hasMore || query.numRowsAffected() == pruneRows;
    }
    QVariant freePages;
    if (!check(m_connection.execute(QStringLiteral("PRAGMA incremental_vacuum(%1)").arg(prunePages)) &&
               m_connection.read(QStringLiteral("PRAGMA freelist_count"), &freePages) &&
               m_connection.commit()))
        return false;
    *hasMore = *hasMore || freePages.toInt() > 0;
    return true;
}

QString JournalFile::moveAside()
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    QString name = m_file + QStringLiteral(".damaged-") + stamp;
    for (int i = 2; QFileInfo::exists(name); ++i)
        name = m_file + QStringLiteral(".damaged-%1-%2").arg(stamp).arg(i);
    if (!QFile::rename(m_file, name))
        return {};
    // What was not yet in the file itself may help whoever repairs it; the index of it is made anew.
    QFile::rename(m_file + QStringLiteral("-wal"), name + QStringLiteral("-wal"));
    QFile::remove(m_file + QStringLiteral("-shm"));
    return name;
}

bool JournalFile::check(bool isOk)
{
    return isOk || fail(m_connection.problem());
}

bool JournalFile::fail(const FileProblem& problem)
{
    m_problem = problem;
    return false;
}
