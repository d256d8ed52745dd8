#include "journalexport.h"

#include "connection.h"
#include "csv.h"
#include "isotime.h"
#include "schema.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QSqlError>
#include <QVariant>

#include <iterator>
#include <memory>

#include <unistd.h>

namespace {

// Where the lines go. A file appears under its name only when it is complete; what is not an ordinary file
// (a pipe, a device) is written as it stands, never replaced by one.
class Target
{
public:
    explicit Target(const QString& name)
        : m_name(name)
    {
        const QFileInfo info(name);
        if (name == QLatin1String("-")) {
            auto output = std::make_unique<QFile>();
            output->open(STDOUT_FILENO, QIODevice::WriteOnly);
            m_device = std::move(output);
        } else if (info.exists() && !info.isFile()) {
            m_device = std::make_unique<QFile>(name);
            m_device->open(QIODevice::WriteOnly);
        } else {
            auto file = std::make_unique<QSaveFile>(name);
            file->open(QIODevice::WriteOnly);
            m_saveFile = file.get();
            m_device = std::move(file);
        }
    }

    bool isOpen() const { return m_device->isOpen(); }
    bool write(const QByteArray& line) { return m_device->write(line) == line.size(); }
    bool finish() { return m_saveFile ? m_saveFile->commit() : m_device->flush(); }

    QString error() const
    {
        const QString name = m_name == QLatin1String("-") ? QStringLiteral("standard output") : m_name;
        return QStringLiteral("%1: %2").arg(name, m_device->errorString());
    }

private:
    QString m_name;
    std::unique_ptr<QFileDevice> m_device;
    QSaveFile* m_saveFile = nullptr;
};

// One table of the journal and how its rows become lines.
struct Table
{
    QString name;
    QString condition;   // besides time and unit; may be empty
    QStringList columns; // after the time
    QStringList headings;
};

QString errorLine(const ExportRequest& request, const QString& text)
{
    return QStringLiteral("journal %1: %2").arg(request.journalFile, text);
}

QString databaseError(const ExportRequest& request, const FileProblem& problem)
{
    if (problem.kind == FileProblem::Kind::Damaged)
        return errorLine(request, QStringLiteral("it is damaged (%1)").arg(problem.text));
    return errorLine(request, problem.text);
}

QString openJournal(const ExportRequest& request, Connection* connection)
{
    if (!Connection::isDriverAvailable())
        return errorLine(request, QStringLiteral("Qt has no SQLite driver: install libqt5sql5-sqlite"));
    if (!QFileInfo(request.journalFile).isFile())
        return errorLine(request, QStringLiteral("no such file: name one with --journal"));
    if (QFileInfo(request.targetFile) == QFileInfo(request.journalFile))
        return errorLine(request, QStringLiteral("the export would replace it: name another file"));
    int version = 0;
    // One transaction for all that follows: headings and rows of the same moment.
    if (!connection->open(request.journalFile, Connection::Mode::ReadOnly) ||
        !connection->execute(QStringLiteral("BEGIN")) || !connection->checkIdentity(&version))
        return databaseError(request, connection->problem());
    if (version == 0)
        return errorLine(request, QStringLiteral("nothing was ever written to it"));
    return {};
}

// A wrong name would otherwise give an empty file, which reads as "nothing happened".
QString checkUnit(const ExportRequest& request, Connection& connection)
{
    if (request.unit.isEmpty())
        return {};
    QSqlQuery query;
    if (!connection.prepare(QStringLiteral("SELECT unit FROM event UNION SELECT unit FROM data_log UNION "
                                           "SELECT unit FROM period ORDER BY unit"),
                            &query) ||
        !connection.execute(query))
        return databaseError(request, connection.problem());
    QStringList known;
    while (query.next())
        known += query.value(0).toString();
    if (known.contains(request.unit))
        return {};
    const QString names = known.isEmpty() ? QStringLiteral("none") : known.join(QStringLiteral(", "));
    return errorLine(request,
                     QStringLiteral("it has no unit \"%1\"; there are: %2").arg(request.unit, names));
}

QString rowsStatement(const ExportRequest& request, const Table& table)
{
    QStringList conditions;
    if (request.fromUtcMs)
        conditions += QStringLiteral("time_ms >= ?");
    if (request.toUtcMs)
        conditions += QStringLiteral("time_ms < ?");
    if (!request.unit.isEmpty())
        conditions += QStringLiteral("unit = ?");
    if (!table.condition.isEmpty())
        conditions += QLatin1Char('(') + table.condition + QLatin1Char(')');
    QString text = QStringLiteral("SELECT time_ms, %1 FROM %2")
                       .arg(table.columns.join(QStringLiteral(", ")), table.name);
    if (!conditions.isEmpty())
        text += QStringLiteral(" WHERE ") + conditions.join(QStringLiteral(" AND "));
    return text + QStringLiteral(" ORDER BY id");
}

bool selectRows(const ExportRequest& request, const Table& table, Connection& connection, QSqlQuery* query)
{
    if (!connection.prepare(rowsStatement(request, table), query))
        return false;
    if (request.fromUtcMs)
        query->addBindValue(*request.fromUtcMs);
    if (request.toUtcMs)
        query->addBindValue(*request.toUtcMs);
    if (!request.unit.isEmpty())
        query->addBindValue(request.unit);
    return connection.execute(*query);
}

QString writeTable(const ExportRequest& request, const Table& table, Connection& connection)
{
    QSqlQuery query;
    if (!selectRows(request, table, connection, &query))
        return databaseError(request, connection.problem());
    Target target(request.targetFile);
    if (!target.isOpen() || !target.write(csv::line(QStringList(QStringLiteral("time")) + table.headings)))
        return target.error();
    while (query.next()) {
        QStringList fields(isotime::fromUtcMs(query.value(0).toLongLong()));
        // The values are texts and whole numbers, which read the same in every locale.
        for (int i = 1; i <= table.columns.size(); ++i)
            fields += query.value(i).toString();
        if (!target.write(csv::line(fields)))
            return target.error();
    }
    if (query.lastError().isValid())
        return databaseError(request, fileproblem::from(query.lastError(), request.journalFile));
    return target.finish() ? QString() : target.error();
}

QString readHeadings(const ExportRequest& request, Connection& connection, QStringList* headings)
{
    QSqlQuery query;
    if (!connection.prepare(QStringLiteral("SELECT text FROM data_log_heading ORDER BY position"), &query) ||
        !connection.execute(query))
        return databaseError(request, connection.problem());
    while (query.next())
        *headings += query.value(0).toString();
    return {};
}

} // namespace

QString journalexport::writeEvents(const ExportRequest& request)
{
    static const QStringList columns{QStringLiteral("unit"),  QStringLiteral("type"),
                                     QStringLiteral("code"),  QStringLiteral("text"),
                                     QStringLiteral("state"), QStringLiteral("record")};
    Connection connection;
    QString error = openJournal(request, &connection);
    if (error.isEmpty())
        error = checkUnit(request, connection);
    if (error.isEmpty())
        error = writeTable(request, {QStringLiteral("event"), request.eventCondition, columns, columns},
                           connection);
    return error;
}

QString journalexport::writeLog(const ExportRequest& request)
{
    Table table{QStringLiteral("data_log"), {}, {QStringLiteral("unit")}, {QStringLiteral("unit")}};
    for (const char* column : schema::logColumns)
        table.columns += QLatin1String(column);
    Connection connection;
    QString error = openJournal(request, &connection);
    if (error.isEmpty())
        error = checkUnit(request, connection);
    if (error.isEmpty())
        error = readHeadings(request, connection, &table.headings);
    if (error.isEmpty())
        error = writeTable(request, table, connection);
    return error;
}
