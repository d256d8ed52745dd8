#pragma once

#include "text.h"

#include <QtTest>

template <typename Type>
struct RowValue
{
    using Given = Type;
};
template <>
struct RowValue<QString>
{
    using Given = Text;
};

/// Declares the columns of a test's data. What it returns adds a row: its name and a value for each column.
template <typename... Types, typename... Names>
auto columns(Names... names)
{
    (QTest::addColumn<Types>(names), ...);
    return [](const QByteArray& name, const typename RowValue<Types>::Given&... values) {
        (QTest::newRow(name.constData()) << ... << static_cast<const Types&>(values));
    };
}

/// The name of the row under test, where the row is about just that.
inline QString rowName()
{
    return QString::fromUtf8(QTest::currentDataTag());
}
