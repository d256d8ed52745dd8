#include "unitlistmodel.h"

#include "collectthread.h"
#include "eventtype.h"
#include "unitsession.h"

#include <algorithm>

UnitListModel::UnitListModel(const QVector<UnitSession*>& units, QObject* parent)
    : QAbstractListModel(parent)
{
    for (UnitSession* unit : units) {
        const int row = m_rows.size();
        m_rows.append(Row{unit, {}});
        refresh(row);
        connect(unit, &UnitSession::eventReceived, this, [this, row](int type) { takeEvent(row, type); });
    }
}

int UnitListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

QVariant UnitListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row& row = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return row.session->name();
    case Qt::AccessibleTextRole:
    case Qt::ToolTipRole:
        return row.summary.spokenText(row.session->name());
    case SummaryRole:
        return QVariant::fromValue(row.summary);
    default:
        return {};
    }
}

int UnitListModel::count(UnitSummary::Tone tone) const
{
    return static_cast<int>(std::count_if(m_rows.begin(), m_rows.end(),
                                          [tone](const Row& row) { return row.summary.tone == tone; }));
}

// At once, so that the list never says anything else than the pages.
void UnitListModel::takeEvent(int row, int type)
{
    if (type == EventType::Data || type == EventType::Communicating || type == EventType::CommunicationLost)
        refresh(row);
}

void UnitListModel::refresh(int row)
{
    Row& entry = m_rows[row];
    const UnitState& state = entry.session->state();
    const QStringList logRow = state.liveData().isEmpty()
                                   ? QStringList()
                                   : entry.session->collector().changeLogData(state.liveData());
    const UnitSummary summary = UnitSummary::of(state, logRow, QDate::currentDate());
    if (summary == entry.summary)
        return;
    entry.summary = summary;
    emit dataChanged(index(row), index(row));
}
