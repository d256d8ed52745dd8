#include "eventmodel.h"

#include "eventmark.h"
#include "isotime.h"

#include <QDateTime>

namespace {

constexpr QRgb dangerColor = qRgb(179, 38, 30); // what needs looking at; the same as in the style sheet

bool isSevere(EventKinds::Kind kind)
{
    return kind == EventKinds::AlarmAppeared || kind == EventKinds::Lost;
}

} // namespace

EventModel::EventModel(QObject* parent)
    : QAbstractTableModel(parent)
{
    for (const EventKinds::Kind kind : EventKinds::each)
        m_marks.insert(kind, eventmark::icon(kind));
    connect(&m_discardTimer, &QTimer::timeout, this, &EventModel::discardSome);
}

void EventModel::clear()
{
    beginResetModel();
    m_discarded.push_back(std::move(m_rows));
    m_discardTimer.start(0);
    m_rows.clear();
    m_isWaiting = true;
    m_isEnd = false;
    endResetModel();
}

void EventModel::discardSome()
{
    constexpr size_t count = 5000; // a few milliseconds
    std::deque<EventRow>& rows = m_discarded.back();
    rows.resize(rows.size() - qMin(rows.size(), count));
    if (rows.empty())
        m_discarded.pop_back();
    if (m_discarded.empty())
        m_discardTimer.stop();
}

void EventModel::prepend(const EventRows& rows)
{
    if (rows.isEmpty())
        return;
    beginInsertRows({}, 0, rows.size() - 1);
    m_rows.insert(m_rows.begin(), rows.constData(), rows.constData() + rows.size());
    endInsertRows();
}

void EventModel::append(const EventRows& rows, bool isEnd)
{
    m_isWaiting = false;
    m_isEnd = isEnd;
    if (rows.isEmpty())
        return;
    const int first = rowCount();
    beginInsertRows({}, first, first + rows.size() - 1);
    m_rows.insert(m_rows.end(), rows.constData(), rows.constData() + rows.size());
    endInsertRows();
}

void EventModel::trim(int keptCount)
{
    if (m_isWaiting || keptCount >= rowCount())
        return;
    beginRemoveRows({}, keptCount, rowCount() - 1);
    m_rows.resize(static_cast<size_t>(keptCount));
    m_isEnd = false;
    endRemoveRows();
}

int EventModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int EventModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant EventModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const EventRow& row = at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return textAt(row, index.column());
    case Qt::DecorationRole:
        return index.column() == KindColumn ? QVariant(m_marks.value(row.kind)) : QVariant();
    case Qt::ForegroundRole:
        return isSevere(row.kind) && (index.column() == KindColumn || index.column() == TextColumn)
                   ? QVariant(QColor(dangerColor))
                   : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == CodeColumn ? int(Qt::AlignRight | Qt::AlignVCenter)
                                            : int(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ToolTipRole: // a column may be too narrow for it
        return index.column() == TimeColumn ? isotime::fromUtcMs(row.utcMs) : textAt(row, index.column());
    default:
        return {};
    }
}

QString EventModel::textAt(const EventRow& row, int column) const
{
    switch (column) {
    case KindColumn:
        return EventKinds::name(row.kind);
    case TimeColumn:
        return QDateTime::fromMSecsSinceEpoch(row.utcMs).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    case UnitColumn:
        return row.unit;
    case CodeColumn:
        return row.code ? QString::number(*row.code) : QString();
    default:
        return row.text;
    }
}

QVariant EventModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const QString headings[] = {tr("Kind"), tr("Time"), tr("Unit"), tr("Code"), tr("Event")};
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return headings[section];
    if (role == Qt::TextAlignmentRole)
        return int((section == CodeColumn ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}

bool EventModel::canFetchMore(const QModelIndex& parent) const
{
    return !parent.isValid() && !m_isWaiting && !m_isEnd;
}

void EventModel::fetchMore(const QModelIndex& parent)
{
    if (!canFetchMore(parent))
        return;
    m_isWaiting = true;
    emit olderWanted(m_rows.empty() ? 0 : m_rows.back().id);
}
