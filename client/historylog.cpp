#include "historylog.h"

namespace historylog {

namespace {

constexpr int fieldCount = 8;

QString twoDigits(const QString& field)
{
    return QString::number(field.toInt()).rightJustified(2, QLatin1Char('0')); // padded, never cut
}

} // namespace

void takeCodeLine(const QString& line, const QString& languageCode, QMap<int, QString>& codes)
{
    // Through UTF-8 and back, so that the text ends at its first zero byte: code maps made by older tools are
    // padded with them.
    const QStringList fields = QString::fromUtf8(line.toUtf8().constData()).split(QLatin1Char(','));
    const auto field = [&](int index) { return fields.value(index).trimmed(); };
    if (field(0).isEmpty())
        return;
    const bool isSecondLanguage = languageCode != QLatin1String("0") && !field(2).isEmpty();
    codes.insert(field(0).toInt(), field(isSecondLanguage ? 2 : 1));
}

QString rowOf(const QByteArray& line, const QMap<int, QString>& codes, const QMap<int, QString>& states)
{
    const QStringList fields = QString::fromLatin1(line).split(QLatin1Char(' '));
    if (fields.size() < fieldCount)
        return {};
    const int code = fields.at(0).toInt();
    QStringList time;
    for (int i = 2; i < fieldCount; ++i)
        time << twoDigits(fields.at(i).trimmed());
    // Every row ends in a comma, as the heading does: programs that read these files count on it.
    return QString::number(code) + QLatin1Char(',') + codes.value(code, QString::number(code)) +
           QLatin1Char(',') + states.value(fields.at(1).toInt()) + QStringLiteral(",20") + time.at(0) +
           QLatin1Char('-') + time.at(1) + QLatin1Char('-') + time.at(2) + QLatin1Char(' ') + time.at(3) +
           QLatin1Char(':') + time.at(4) + QLatin1Char(':') + time.at(5) + QStringLiteral(",\n");
}

} // namespace historylog
