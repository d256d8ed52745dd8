#include "trendreader.h"

#include "trendrows.h"

#include <QDateTime>

#include <algorithm>
#include <limits>

namespace {

constexpr int lookIntervalMs = 1000; // the shortest interval of a data log
constexpr int chunkRows = 10000;     // a fraction of a second, after which a newer order is heeded
constexpr int leadingRows = 3;       // from which the curves enter, and which tell the interval
constexpr int progressMs = 400;
constexpr qint64 endOfTime = std::numeric_limits<qint64>::max();

QString columns()
{
    QString text = QStringLiteral("time_ms");
    for (const trendrows::Row& row : trendrows::all)
        text += QStringLiteral(", ") + QLatin1String(row.column);
    return text;
}

struct LogTexts
{
    qint64 timeMs;
    QStringList texts;
};

LogTexts textsFrom(const QSqlQuery& query)
{
    LogTexts row{query.value(0).toLongLong(), {}};
    for (int i = 1; i <= trendrows::count; ++i)
        row.texts += query.value(i).toString();
    return row;
}

} // namespace

TrendReader::TrendReader(const QString& journalFile)
    : m_journal(journalFile)
    , m_timer(this)
{
    qRegisterMetaType<TrendRequest>();
    qRegisterMetaType<TrendData>();
    connect(&m_timer, &QTimer::timeout, this, &TrendReader::look);
}

void TrendReader::read(int order, const TrendRequest& request)
{
    m_order = order;
    m_request = request;
    m_isLoaded = false;
    look();
}

void TrendReader::setPaused(bool isPaused)
{
    if (isPaused) {
        m_timer.stop();
        return;
    }
    m_timer.start(lookIntervalMs);
    look();
}

void TrendReader::look()
{
    if (isCancelled())
        return;
    const JournalReader::Opening opening = m_journal.ensureOpen();
    if (opening == JournalReader::Opening::Fresh)
        m_isLoaded = false;
    if (opening != JournalReader::Opening::Failed)
        m_isLoaded = m_isLoaded ? follow() : load();
    if (m_journal.problem() == m_problem)
        return;
    m_problem = m_journal.problem();
    emit problemChanged(m_problem);
}

// In chunks, with what there is so far shown in between.
bool TrendReader::load()
{
    const qint64 fromMs = endMs() - m_request.spanMs;
    m_trend = LoadedTrend(sliceMs());
    m_sinceSent.start();
    if (!readNewestId() || !readPeriods() || !readSpan(fromMs) || isCancelled())
        return false;
    send(true);
    return true;
}

bool TrendReader::readSpan(qint64 fromMs)
{
    const qint64 toMs = m_request.endMs > 0 ? m_request.endMs : endOfTime;
    const QString forward = QStringLiteral("time_ms > ? AND time_ms <= ? ORDER BY time_ms LIMIT ?");
    if (!readRows(QStringLiteral("time_ms <= ? ORDER BY time_ms DESC LIMIT ?"), {fromMs, leadingRows}))
        return false;
    qint64 readMs = -1;
    while (m_trend.lastMs() != readMs && !isCancelled()) {
        readMs = m_trend.lastMs();
        if (!readRows(forward, {qMax(readMs, fromMs), toMs, chunkRows}))
            return false;
        if (m_sinceSent.hasExpired(progressMs))
            send(false);
    }
    // The curves leave the window towards the next row.
    return toMs == endOfTime || readRows(forward, {toMs, endOfTime, 1});
}

bool TrendReader::follow()
{
    const qint64 knownId = m_newestId;
    if (m_request.endMs > 0)
        return true;
    if (!readNewestId())
        return false;
    if (m_newestId < knownId) // another file was copied over this one
        return load();
    if (m_newestId > knownId) {
        if (!readPeriods() ||
            !readRows(QStringLiteral("time_ms > ? AND id > ? ORDER BY time_ms"), {m_trend.lastMs(), knownId}))
            return false;
    }
    // Without new rows the time axis still goes on, a pixel at a time.
    if (m_newestId > knownId || endMs() - m_sentToMs >= sliceMs())
        send(true);
    return true;
}

bool TrendReader::readNewestId()
{
    return m_journal.read(QStringLiteral("SELECT max(id) FROM data_log"), {},
                          [this](const QSqlQuery& row) { m_newestId = row.value(0).toLongLong(); });
}

bool TrendReader::readPeriods()
{
    QVector<qint64> beginnings;
    if (!m_journal.read(QStringLiteral("SELECT from_ms FROM period WHERE unit = ? ORDER BY from_ms"),
                        {m_request.unit},
                        [&](const QSqlQuery& row) { beginnings += row.value(0).toLongLong(); }))
        return false;
    m_trend.setPeriodBeginnings(beginnings);
    return true;
}

bool TrendReader::readRows(const QString& condition, const QVariantList& values)
{
    static const QString select =
        QStringLiteral("SELECT %1 FROM data_log WHERE unit = ? AND ").arg(columns());
    QVector<LogTexts> rows;
    const QVariantList all = QVariantList{m_request.unit} + values;
    if (!m_journal.read(select + condition, all, [&](const QSqlQuery& row) { rows += textsFrom(row); }))
        return false;
    if (condition.contains(QLatin1String("DESC")))
        std::reverse(rows.begin(), rows.end());
    for (const LogTexts& row : qAsConst(rows))
        m_trend.takeRow(row.timeMs, row.texts);
    return true;
}

void TrendReader::send(bool isComplete)
{
    const qint64 toMs = endMs();
    const qint64 fromMs = toMs - m_request.spanMs;
    m_trend.dropBefore(fromMs);
    TrendData data = m_trend.data(fromMs, toMs, m_request.endMs == 0);
    data.isComplete = isComplete;
    m_sentToMs = toMs;
    m_sinceSent.start();
    emit dataRead(m_order, data);
}

qint64 TrendReader::endMs() const
{
    return m_request.endMs > 0 ? m_request.endMs : QDateTime::currentMSecsSinceEpoch();
}

qint64 TrendReader::sliceMs() const
{
    return qMax<qint64>(1, m_request.spanMs / qMax(1, m_request.widthPx));
}
