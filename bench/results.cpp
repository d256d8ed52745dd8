#include "results.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSysInfo>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace {

QString firstMatch(const QString& file, const QString& key)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return {};
    const QStringList lines = QString::fromUtf8(source.readAll()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (line.startsWith(key))
            return line.mid(line.indexOf(QLatin1Char(':')) + 1).trimmed();
    }
    return {};
}

QString machineName()
{
    return QStringLiteral("%1, %2 processors, %3 %4, Qt %5")
        .arg(firstMatch(QStringLiteral("/proc/cpuinfo"), QStringLiteral("model name")),
             QString::number(QThread::idealThreadCount()), QSysInfo::prettyProductName(),
             QSysInfo::kernelVersion(), QString::fromLatin1(qVersion()));
}

/// Three significant digits, and whole numbers in full.
QString text(double value)
{
    return value >= 100 ? QString::number(value, 'f', 0) : QString::number(value, 'g', 3);
}

QString text(const std::optional<double>& value)
{
    return value ? text(*value) : QStringLiteral("-");
}

QString text(const std::optional<bool>& isMet)
{
    return !isMet ? QStringLiteral("-") : *isMet ? QStringLiteral("met") : QStringLiteral("MISSED");
}

QJsonValue json(const std::optional<double>& value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

QString loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly)
               ? QString::fromLatin1(file.readAll()).section(QLatin1Char(' '), 0, 2)
               : QString();
}

void printLine(const QStringList& cells)
{
    std::printf("%-8s %-52s %6s %9s %9s %7s %7s %-7s %s\n", qPrintable(cells[0]), qPrintable(cells[1]),
                qPrintable(cells[2]), qPrintable(cells[3]), qPrintable(cells[4]), qPrintable(cells[5]),
                qPrintable(cells[6]), qPrintable(cells[7]), qPrintable(cells[8]));
    std::fflush(stdout);
}

} // namespace

std::optional<double> Row::ratio() const
{
    return peer ? std::optional(ours / *peer) : std::nullopt;
}

std::optional<bool> Row::isMet() const
{
    return bar ? std::optional(ratio().value_or(ours) <= *bar) : std::nullopt;
}

Results::Results(const QString& commit)
    : m_machine(machineName())
    , m_date(QDateTime::currentDateTime().toString(Qt::ISODate))
    , m_commit(commit)
    , m_loadAtStart(loadAverage())
{}

void Results::printHead() const
{
    std::printf("%s\n%s, commit %s, load average %s\n\n", qPrintable(m_machine), qPrintable(m_date),
                qPrintable(m_commit), qPrintable(m_loadAtStart));
    printLine({QStringLiteral("measure"), QStringLiteral("what"), QStringLiteral("unit"),
               QStringLiteral("ours"), QStringLiteral("peer"), QStringLiteral("ratio"), QStringLiteral("bar"),
               QString(), QStringLiteral("peer, bar")});
}

void Results::add(const Row& row)
{
    m_rows.append(row);
    printLine({row.measure, row.what, row.unit, text(row.ours), text(row.peer), text(row.ratio()),
               text(row.bar), text(row.isMet()), row.note});
}

bool Results::areMet() const
{
    return std::all_of(m_rows.begin(), m_rows.end(),
                       [](const Row& row) { return row.isMet().value_or(true); });
}

bool Results::writeJson(const QString& file) const
{
    QJsonArray rows;
    for (const Row& row : m_rows) {
        const auto isMet = row.isMet();
        rows.append(QJsonObject{{QStringLiteral("measure"), row.measure},
                                {QStringLiteral("name"), row.what},
                                {QStringLiteral("unit"), row.unit},
                                {QStringLiteral("ours"), row.ours},
                                {QStringLiteral("peer"), json(row.peer)},
                                {QStringLiteral("ratio"), json(row.ratio())},
                                {QStringLiteral("bar"), json(row.bar)},
                                {QStringLiteral("met"), isMet ? QJsonValue(*isMet) : QJsonValue()},
                                {QStringLiteral("note"), row.note}});
    }
    const QJsonObject all{
        {QStringLiteral("machine"), m_machine},       {QStringLiteral("date"), m_date},
        {QStringLiteral("commit"), m_commit},         {QStringLiteral("loadAtStart"), m_loadAtStart},
        {QStringLiteral("loadAtEnd"), loadAverage()}, {QStringLiteral("rows"), rows}};
    QSaveFile target(file);
    if (target.open(QIODevice::WriteOnly) && target.write(QJsonDocument(all).toJson()) > 0 && target.commit())
        return true;
    std::fprintf(stderr, "ups-bench: cannot write %s: %s\n", qPrintable(file),
                 qPrintable(target.errorString()));
    return false;
}
