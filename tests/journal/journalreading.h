#pragma once

#include "connection.h"

#include <QStringList>
#include <QVariant>

/// The first column of everything that a statement gives, read as another program would read the journal.
inline QStringList readColumn(const QString& file, const QString& statement)
{
    Connection connection;
    QSqlQuery query;
    if (!connection.open(file, Connection::Mode::ReadOnly) || !connection.prepare(statement, &query) ||
        !connection.execute(query))
        return {QStringLiteral("error: ") + connection.problem().text};
    QStringList values;
    while (query.next())
        values += query.value(0).toString();
    return values;
}
