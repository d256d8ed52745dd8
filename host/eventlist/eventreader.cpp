#include "eventreader.h"

#include "eventtext.h"

#include <QVariant>

#include <algorithm>

namespace {

constexpr int lookIntervalMs = 400; // with the writer's 250 an event is seen within a second
constexpr int pageSize = 500;
// A statement looks at so many events at most: some 20 ms, so that a cancelled search ends at once and the
// writer's checkpoints never wait long for a reader.
constexpr qint64 windowSize = 20000;

// Columns of EventFilter::statement().
enum Column
{
    Id,
    TimeMs,
    Unit,
    Type,
    Code,
    Text,
    State,
    Record
};

std::optional<int> number(const QVariant& value)
{
    return value.isNull() ? std::nullopt : std::optional<int>(value.toInt());
}

EventRow rowFrom(const QSqlQuery& query)
{
    const JournalEvent event{query.value(TimeMs).toLongLong(), query.value(Unit).toString(),
                             query.value(Type).toInt(),        number(query.value(Code)),
                             query.value(Text).toString(),     number(query.value(State)),
                             query.value(Record).toByteArray()};
    return {query.value(Id).toLongLong(),
            event.utcMs,
            event.unit,
            EventKinds::of(event.type, event.state),
            event.code,
            EventText::describe(event)};
}

} // namespace

EventReader::EventReader(const QString& journalFile)
    : m_journal(journalFile)
    , m_timer(this)
{
    qRegisterMetaType<EventFilter>();
    qRegisterMetaType<EventRows>();
    connect(&m_timer, &QTimer::timeout, this, &EventReader::look);
}

void EventReader::begin(int order, const EventFilter& filter)
{
    m_order = order;
    m_filter = filter;
    m_isBegun = false;
    m_timer.start(lookIntervalMs);
    look();
}

void EventReader::readOlder(int order, qint64 beforeId)
{
    if (order != m_order)
        return;
    if (beforeId > 0)
        m_oldestId = beforeId;
    m_isOlderWanted = true;
    look();
}

void EventReader::look()
{
    if (isCancelled())
        return;
    const JournalReader::Opening opening = m_journal.ensureOpen();
    if (opening == JournalReader::Opening::Fresh)
        m_isBegun = false;
    if (opening != JournalReader::Opening::Failed)
        lookAtAll();
    setProblem(m_journal.problem());
}

bool EventReader::lookAtAll()
{
    return (m_isBegun || restart()) && readNewer() && readUnits() && (!m_isOlderWanted || readOlderPage());
}

bool EventReader::restart()
{
    IdRange range;
    if (!readIdRange(&range))
        return false;
    m_newestId = range.largest;
    m_oldestId = range.largest + 1;
    m_unitsAtId = -1;
    m_isBegun = true;
    m_isOlderWanted = true;
    emit begun(m_order);
    return true;
}

bool EventReader::readNewer()
{
    IdRange range;
    if (!readIdRange(&range))
        return false;
    if (range.largest < m_newestId) // another file was copied over this one, or all events were deleted
        return restart();
    while (m_newestId < range.largest && !isCancelled()) {
        EventRows rows;
        const qint64 toId = qMin(m_newestId + windowSize, range.largest);
        if (!select(m_newestId + 1, toId, pageSize, Qt::AscendingOrder, &rows))
            return false;
        m_newestId = rows.size() == pageSize ? rows.constLast().id : toId;
        std::reverse(rows.begin(), rows.end());
        if (!rows.isEmpty())
            emit newerRead(m_order, rows);
    }
    return true;
}

bool EventReader::readOlderPage()
{
    IdRange range;
    if (!readIdRange(&range))
        return false;
    EventRows rows;
    qint64 oldestId = m_oldestId;
    while (rows.size() < pageSize && oldestId > range.smallest) {
        if (isCancelled())
            return true;
        const qint64 fromId = qMax(range.smallest, oldestId - windowSize);
        if (!select(fromId, oldestId - 1, pageSize - rows.size(), Qt::DescendingOrder, &rows))
            return false;
        oldestId = rows.size() == pageSize ? rows.constLast().id : fromId;
    }
    m_oldestId = oldestId;
    m_isOlderWanted = false;
    emit olderRead(m_order, rows, oldestId <= range.smallest);
    return true;
}

// From one name to the next by the index: the events themselves are not looked at.
bool EventReader::readUnits()
{
    if (m_unitsAtId == m_newestId)
        return true;
    QStringList units;
    QString last = QStringLiteral("");
    while (!last.isNull()) {
        const QVariantList values{last};
        if (!m_journal.read(QStringLiteral("SELECT min(unit) FROM event WHERE unit > ?"), values,
                            [&](const QSqlQuery& row) { last = row.value(0).toString(); }))
            return false;
        if (!last.isNull())
            units += last;
    }
    m_unitsAtId = m_newestId;
    if (units != m_units) {
        m_units = units;
        emit unitsRead(units);
    }
    return true;
}

// Two statements: each takes one step of the index, together they would look at every event.
bool EventReader::readIdRange(IdRange* range)
{
    return m_journal.read(QStringLiteral("SELECT min(id) FROM event"), {}, [=](const QSqlQuery& row) {
        range->smallest = row.value(0).toLongLong();
    }) && m_journal.read(QStringLiteral("SELECT max(id) FROM event"), {}, [=](const QSqlQuery& row) {
        range->largest = row.value(0).toLongLong();
    });
}

bool EventReader::select(qint64 fromId, qint64 toId, int maxCount, Qt::SortOrder order, EventRows* rows)
{
    return m_journal.read(m_filter.statement(order), m_filter.values(fromId, toId, maxCount),
                          [=](const QSqlQuery& row) { rows->append(rowFrom(row)); });
}

void EventReader::setProblem(const QString& line)
{
    if (line == m_problem)
        return;
    m_problem = line;
    emit problemChanged(line);
}
