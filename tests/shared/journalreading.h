#pragma once

#include "connection.h"

#include <QSqlRecord>
#include <QStringList>
#include <QVariant>

/// Everything that a statement gives, read as another program would read the journal.
inline QList<QVariantList> readRows(const QString& file, const char* statement)
{
    Connection connection;
    QSqlQuery query;
    if (!connection.open(file, Connection::Mode::ReadOnly) ||
        !connection.prepare(QLatin1String(statement), &query) || !connection.execute(query))
        return {{QString(QStringLiteral("error: ") + connection.problem().text)}};
    QList<QVariantList> rows;
    while (query.next()) {
        rows.append(QVariantList());
        for (int column = 0; column < query.record().count(); ++column)
            rows.last().append(query.value(column));
    }
    return rows;
}

/// The first column of it.
inline QByteArrayList readColumn(const QString& file, const char* statement)
{
    QByteArrayList values;
    const QList<QVariantList> rows = readRows(file, statement);
    for (const QVariantList& row : rows)
        values += row.value(0).toString().toUtf8();
    return values;
}
