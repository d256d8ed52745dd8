#include "csv.h"

#include <algorithm>

namespace {

bool needsQuotes(const QString& field)
{
    return std::any_of(field.begin(), field.end(), [](QChar c) {
        return c == QLatin1Char(',') || c == QLatin1Char('"') || c == QLatin1Char('\n') ||
               c == QLatin1Char('\r');
    });
}

QString quoted(QString field)
{
    field.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + field + QLatin1Char('"');
}

} // namespace

QByteArray csv::line(const QStringList& fields)
{
    QString text;
    for (int i = 0; i < fields.size(); ++i) {
        if (i > 0)
            text += QLatin1Char(',');
        text += needsQuotes(fields[i]) ? quoted(fields[i]) : fields[i];
    }
    text += QLatin1Char('\n');
    return text.toUtf8();
}
