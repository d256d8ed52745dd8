#include "journal.h"

#include <QDateTime>
#include <QFileInfo>
#include <QMutexLocker>

QString Journal::refusal(const QString& file)
{
    if (!Connection::isDriverAvailable())
        return QStringLiteral("journal %1: Qt has no SQLite driver: install libqt5sql5-sqlite").arg(file);
    if (QFileInfo(file).isDir())
        return QStringLiteral("journal %1: it is a folder: name a file").arg(file);
    Connection connection;
    int version = 0;
    if (!QFileInfo::exists(file) || !connection.open(file, Connection::Mode::ReadOnly) ||
        connection.checkIdentity(&version) || connection.problem().kind != FileProblem::Kind::Refused)
        return {};
    return QStringLiteral("journal %1: %2").arg(file, connection.problem().text);
}

Journal::Journal(const JournalSettings& settings, JournalWriter::Report report)
    : m_writer(settings.file, settings.logHeadings, settings.keepDays, m_queue, std::move(report))
{
    m_writer.start();
}

Journal::~Journal()
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const QStringList units = m_openPeriods.keys();
    for (const QString& unit : units)
        endPeriod(unit, now, PeriodEnding::Stopped);
    m_writer.requestStop();
    m_writer.wait();
}

void Journal::beginPeriod(const QString& unit, qint64 utcMs)
{
    const QMutexLocker locker(&m_lock);
    if (m_openPeriods.contains(unit))
        return;
    m_openPeriods.insert(unit, utcMs);
    m_queue.append(CommunicationPeriod{unit, utcMs, {}, PeriodEnding::Open});
}

void Journal::endPeriod(const QString& unit, qint64 utcMs, PeriodEnding ending)
{
    const QMutexLocker locker(&m_lock);
    const auto open = m_openPeriods.find(unit);
    if (open == m_openPeriods.end())
        return;
    // The clock may have been set back meanwhile.
    m_queue.append(CommunicationPeriod{unit, open.value(), qMax(open.value(), utcMs), ending});
    m_openPeriods.erase(open);
}
