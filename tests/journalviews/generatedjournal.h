#pragma once

#include "journalfile.h"

#include <QtTest>

/// A journal made from records, without waiting for a writer's thread.
namespace generatedjournal {

inline JournalEvent event(qint64 utcMs, const QString& unit, int type, std::optional<int> code = {},
                          std::optional<int> state = {}, const QString& text = {},
                          const QByteArray& json = {})
{
    return {utcMs, unit, type, code, text, state, json};
}

/// Adds records to a file, which is made when there is none.
inline void write(const QString& file, const std::vector<JournalRecord>& records)
{
    JournalFile journal(file, {});
    QVERIFY2(journal.open(), qPrintable(journal.problem().text));
    QVERIFY2(journal.write(records), qPrintable(journal.problem().text));
}

/// One row of a unit of three phases; the texts are those of the columns that trends show.
inline LogRow row(qint64 utcMs, const QString& unit, const QString& input, const QString& output,
                  const QString& load, const QString& battery, const QString& capacity)
{
    const QString none;
    return {utcMs, unit, {input, none, none, none, output, none, none, load, none, none, capacity, battery}};
}

} // namespace generatedjournal
