#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

/// The unit's history on its way from the driver's text file to a table that people read.
namespace historylog {

/// One line of the code map, taken up into codes; a line without a code is skipped. languageCode "0" asks
/// for the first language, any other for the second where the line has it.
void takeCodeLine(const QString& line, const QString& languageCode, QMap<int, QString>& codes);

/// The row for one line of the history, line feed included; null for a line of fewer than eight fields. A
/// code without a text shows as its number, a state without one as nothing.
QString rowOf(const QByteArray& line, const QMap<int, QString>& codes, const QMap<int, QString>& states);

} // namespace historylog
