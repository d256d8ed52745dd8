#include "alarmtable.h"

#include "pagetext.h"

#include <QHeaderView>
#include <QPainter>

namespace {

constexpr int firstAlarmPoint = 2000;
constexpr int alarmCount = 512;
constexpr int tableHeight = 610;     // px
constexpr int timeColumnWidth = 190; // at least
constexpr int placeholderTop = 40;
const QColor placeholderColor(90, 94, 112); // on white as the table's ground

} // namespace

void AlarmTimes::take(const QMap<int, QVariant>& data, const QDateTime& now)
{
    QMap<int, QDateTime> active;
    const auto end = data.lowerBound(firstAlarmPoint + alarmCount);
    for (auto point = data.lowerBound(firstAlarmPoint); point != end; ++point) {
        if (point.value().toInt() != 1)
            continue;
        const int index = point.key() - firstAlarmPoint;
        active.insert(index, m_active.value(index, now));
    }
    m_active = active;
}

AlarmTable::AlarmTable(QWidget* parent)
    : PageTable(QStringLiteral("RecordTable"),
                {pageText(QT_TRANSLATE_NOOP("vek5View", "Data/Time")),
                 pageText(QT_TRANSLATE_NOOP("vek5View", "Event description"))},
                parent)
{
    setStyleSheet(QStringLiteral("alternate-background-color: #DDDFF5; background: #FFFFFF;"));
    setMinimumHeight(tableHeight);
    // The style paints the headings' ground white as well, whatever the theme.
    for (int column = 0; column < columnCount(); ++column)
        horizontalHeaderItem(column)->setForeground(Qt::black);
    horizontalHeader()->setMinimumSectionSize(timeColumnWidth);
    horizontalHeader()->setResizeContentsPrecision(1); // all times are alike
    horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
}

void AlarmTable::showAlarms(const QMap<int, QDateTime>& active, const QStringList& texts)
{
    if (active == m_shown)
        return;
    removeGone(active);
    int row = 0;
    for (auto alarm = active.begin(); alarm != active.end(); ++alarm, ++row) {
        if (row == m_indices.size() || m_indices.at(row) != alarm.key()) {
            insertAlarm(row, alarm.value(), texts.value(alarm.key()));
            m_indices.insert(row, alarm.key());
        }
    }
    m_shown = active;
}

void AlarmTable::removeGone(const QMap<int, QDateTime>& active)
{
    for (int row = m_indices.size() - 1; row >= 0; --row) {
        const int index = m_indices.at(row);
        if (active.value(index) == m_shown.value(index))
            continue;
        removeRow(row);
        m_indices.removeAt(row);
    }
}

void AlarmTable::insertAlarm(int row, const QDateTime& seen, const QString& text)
{
    insertRow(row);
    auto* time = new QTableWidgetItem(seen.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    auto* description = new QTableWidgetItem(text);
    description->setToolTip(text);
    setItem(row, 0, time);
    setItem(row, 1, description);
}

void AlarmTable::setPlaceholder(const QString& text)
{
    if (m_placeholder == text)
        return;
    m_placeholder = text;
    viewport()->update();
}

void AlarmTable::paintEvent(QPaintEvent* event)
{
    PageTable::paintEvent(event);
    if (rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(placeholderColor);
    painter.drawText(viewport()->rect().adjusted(0, placeholderTop, 0, 0), Qt::AlignHCenter | Qt::AlignTop,
                     m_placeholder);
}
