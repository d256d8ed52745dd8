#include "journalwriter.h"

#include <QDateTime>
#include <QDir>

namespace {

constexpr int tickMs = 250; // a crash loses what came since the last one: at most a second in all
constexpr size_t batchSize = 1000;
constexpr int aliveMarkMs = 10000;
constexpr int retryMs = 1000;
constexpr qint64 firstReminderMs = 60LL * 1000;
constexpr qint64 lastReminderMs = 60LL * 60 * 1000;
constexpr int replacePauseMs = 60 * 60 * 1000;
constexpr int finishMs = 3000;
constexpr int pruneIntervalMs = 10 * 60 * 1000;
constexpr int pruneSliceMs = 100; // new records never wait for old ones to go
constexpr qint64 msPerDay = 24LL * 60 * 60 * 1000;

QString records(size_t count)
{
    return count == 1 ? QStringLiteral("1 record") : QStringLiteral("%1 records").arg(count);
}

QString waiting(size_t count)
{
    return records(count) + (count == 1 ? QLatin1String(" waits") : QLatin1String(" wait"));
}

} // namespace

JournalWriter::JournalWriter(const QString& file, const QStringList& logHeadings, int keepDays,
                             RecordQueue& queue, Report report)
    : m_file(file)
    , m_logHeadings(logHeadings)
    , m_keepDays(keepDays)
    , m_queue(queue)
    , m_report(std::move(report))
{}

void JournalWriter::run()
{
    JournalFile file(m_file, m_logHeadings);
    do
        workOrWait(file);
    while (!m_stop.tryAcquire(1, tickMs));
    finish(file);
}

void JournalWriter::workOrWait(JournalFile& file)
{
    reportDropped();
    if (m_isInTrouble && !m_nextTry.hasExpired())
        return;
    const size_t waitingBefore = waitingCount();
    if (!work(file))
        takeTrouble(file);
    else if (m_isInTrouble)
        reportRecovery(waitingBefore);
}

bool JournalWriter::work(JournalFile& file)
{
    return ensureOpen(file) && writeWaiting(file) && pruneOld(file);
}

bool JournalWriter::ensureOpen(JournalFile& file)
{
    if (file.isOpen() && file.isGone()) {
        say(QStringLiteral("it was moved or deleted: a new one is begun"));
        file.close();
    }
    return file.isOpen() || file.open();
}

bool JournalWriter::writeWaiting(JournalFile& file)
{
    if (m_batch.empty())
        m_batch = m_queue.take(batchSize);
    // An empty batch still says that the host is alive.
    while (!m_batch.empty() || m_nextAliveMark.hasExpired()) {
        if (!file.write(m_batch))
            return false;
        m_nextAliveMark.setRemainingTime(aliveMarkMs);
        m_batch = m_queue.take(batchSize);
    }
    return true;
}

bool JournalWriter::pruneOld(JournalFile& file)
{
    if (m_keepDays == 0 || !m_nextPrune.hasExpired())
        return true;
    const qint64 oldest = QDateTime::currentMSecsSinceEpoch() - m_keepDays * msPerDay;
    const QDeadlineTimer slice(pruneSliceMs);
    bool hasMore = true;
    while (hasMore && !slice.hasExpired()) {
        if (!file.prune(oldest, &hasMore))
            return false;
    }
    if (!hasMore)
        m_nextPrune.setRemainingTime(pruneIntervalMs);
    return true;
}

void JournalWriter::finish(JournalFile& file)
{
    const QDeadlineTimer limit(finishMs);
    m_nextTry.setRemainingTime(0);
    workOrWait(file);
    while (waitingCount() > 0 && !limit.hasExpired()) {
        msleep(tickMs);
        workOrWait(file);
    }
    if (waitingCount() > 0)
        say(m_troubleText + QStringLiteral("; %1 could not be written").arg(records(waitingCount())));
    file.close();
}

void JournalWriter::takeTrouble(JournalFile& file)
{
    const FileProblem problem = file.problem();
    file.close();
    if (problem.kind == FileProblem::Kind::Damaged)
        replaceDamaged(file);
    else
        reportTrouble(problem);
    m_nextTry.setRemainingTime(retryMs);
}

void JournalWriter::replaceDamaged(JournalFile& file)
{
    const QString detail = file.problem().text;
    // A disk that damages every file must not be littered with them.
    const QString newName = m_nextReplacement.hasExpired() ? file.moveAside() : QString();
    if (newName.isEmpty()) {
        reportTrouble(
            {FileProblem::Kind::Damaged,
             QStringLiteral("it is damaged (%1) and was not moved aside: move it away, check the disk")
                 .arg(detail)});
        return;
    }
    m_nextReplacement.setRemainingTime(replacePauseMs);
    say(QStringLiteral("it is damaged (%1): moved to %2, a new one is begun")
            .arg(detail, QDir::toNativeSeparators(newName)));
}

// One line at once; while the trouble lasts a reminder, less and less often.
void JournalWriter::reportTrouble(const FileProblem& problem)
{
    const bool isNew = !m_isInTrouble || problem.text != m_troubleText;
    if (!isNew && !m_nextReminder.hasExpired())
        return;
    m_reminderPauseMs = isNew ? firstReminderMs : qMin(2 * m_reminderPauseMs, lastReminderMs);
    m_nextReminder.setRemainingTime(m_reminderPauseMs);
    m_isInTrouble = true;
    m_troubleText = problem.text;
    say(problem.text + QStringLiteral("; monitoring goes on, %1").arg(waiting(waitingCount())));
}

void JournalWriter::reportRecovery(size_t writtenCount)
{
    QString text = QStringLiteral("works again, %1 written").arg(records(writtenCount));
    if (m_droppedCount > 0)
        text += QStringLiteral(", %1 lost").arg(records(m_droppedCount));
    say(text);
    m_isInTrouble = false;
    m_droppedCount = 0;
}

void JournalWriter::reportDropped()
{
    const size_t count = m_queue.takeDroppedCount();
    if (count > 0 && m_droppedCount == 0)
        say(QStringLiteral("%1 and no more fit: the oldest are dropped").arg(waiting(waitingCount())));
    m_droppedCount += count;
}

void JournalWriter::say(const QString& text) const
{
    m_report(QStringLiteral("journal %1: %2").arg(m_file, text));
}
