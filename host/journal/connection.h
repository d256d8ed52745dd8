#pragma once

#include "fileproblem.h"

#include <QSqlDatabase>
#include <QSqlQuery>

/// One connection to a journal's file. Everything happens on the thread that opens it. After a call that
/// returned false, problem() says why.
class Connection
{
public:
    enum class Mode
    {
        ReadWrite, ///< creates a missing file
        ReadOnly
    };

    /// False when the Qt library cannot speak to SQLite here.
    static bool isDriverAvailable();

    Connection() = default;
    ~Connection();
    Q_DISABLE_COPY(Connection)

    bool open(const QString& file, Mode mode);
    void close();
    bool isOpen() const { return m_database.isOpen(); }

    /// Runs one statement to its end and drops the rows that it gives.
    bool execute(const QString& statement);
    /// Runs a prepared statement with the values bound to it.
    bool execute(QSqlQuery& query);
    /// The first value that a statement gives.
    bool read(const QString& statement, QVariant* value);
    /// A statement to bind values to, or one without a text when it could not be prepared.
    bool prepare(const QString& statement, QSqlQuery* query);

    bool begin() { return execute(QStringLiteral("BEGIN IMMEDIATE")); }
    bool commit() { return execute(QStringLiteral("COMMIT")); }

    /// False when this program may not use the file: it is of a newer version, or not a journal. *version
    /// is that of the file, 0 for an empty one.
    bool checkIdentity(int* version);

    const FileProblem& problem() const { return m_problem; }

private:
    bool openDatabase(const QString& name, const QString& options);
    bool fail(const QSqlError& error);
    bool refuse(const QString& text);

    QString m_file;
    QSqlDatabase m_database;
    FileProblem m_problem;
};
