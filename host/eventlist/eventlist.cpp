#include "eventlist.h"

#include "eventview.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace {

constexpr int spacing = 8;
constexpr int smallSpacing = 4; // few rows are in sight, and each counts
constexpr int unitNameLength = 16;
constexpr int maxIdleRows = 20000; // while the newest events are in sight
constexpr int keptIdleRows = 10000;

QLabel* makeLine(const char* objectName, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(objectName));
    label->setTextFormat(Qt::PlainText); // file names and errors are no markup
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->hide();
    return label;
}

} // namespace

EventList::EventList(const QString& journalFile, QWidget* parent)
    : QWidget(parent)
    , m_journalFile(journalFile)
    , m_thread(journalFile)
{
    setObjectName(QStringLiteral("EventList"));
    setAttribute(Qt::WA_StyledBackground);
    makeControls();
    layOut();
    connectReader();
    connectControls();
    m_thread.start(QStringLiteral("event list"));
    restart();
}

EventList::~EventList()
{
    if (m_job)
        m_job->wait();
}

void EventList::makeControls()
{
    m_units = new QComboBox(this);
    m_units->setObjectName(QStringLiteral("EventUnits"));
    m_units->setAccessibleName(tr("Events of which unit"));
    m_units->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_units->setMinimumContentsLength(unitNameLength); // however long a name is
    m_units->addItem(tr("All units"), QString());

    m_kinds = new QComboBox(this);
    m_kinds->setObjectName(QStringLiteral("EventKinds"));
    m_kinds->setAccessibleName(tr("Events of which kind"));
    const auto add = [this](const QString& text, EventKinds::Set kinds) {
        m_kinds->addItem(text, int(kinds));
    };
    add(tr("All kinds"), EventKinds::Set(EventKinds::all));
    add(tr("Alarms"), EventKinds::AlarmAppeared | EventKinds::AlarmCleared);
    add(tr("Alarms appeared"), EventKinds::AlarmAppeared);
    add(tr("Alarms cleared"), EventKinds::AlarmCleared);
    add(tr("Communication"), EventKinds::Lost | EventKinds::Answering);
    add(tr("Commands"), EventKinds::Command);
    add(tr("Status points"), EventKinds::Status);

    m_count = new QLabel(this);
    m_count->setObjectName(QStringLiteral("EventCount"));
    m_count->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // never widens the window
    m_export = new QPushButton(tr("&Export..."), this);
    m_export->setObjectName(QStringLiteral("EventExport"));
    m_export->setToolTip(tr("Writes every event of the chosen unit and kind to a CSV file"));
    m_export->setAccessibleDescription(m_export->toolTip());
    m_view = new EventView(m_model, this);
    m_problem = makeLine("EventProblem", this);
    m_notice = makeLine("EventNotice", this);
}

void EventList::layOut()
{
    auto* bar = new QHBoxLayout;
    bar->setSpacing(spacing);
    bar->addWidget(m_units);
    bar->addWidget(m_kinds);
    bar->addWidget(m_count, 1);
    bar->addWidget(m_export);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing, smallSpacing, spacing, smallSpacing);
    column->setSpacing(smallSpacing);
    column->addLayout(bar);
    column->addWidget(m_problem);
    column->addWidget(m_notice);
    column->addWidget(m_view, 1);
}

void EventList::connectReader()
{
    EventReader* reader = m_thread.reader();
    connect(this, &EventList::beginWanted, reader, &EventReader::begin);
    connect(this, &EventList::olderWanted, reader, &EventReader::readOlder);
    connect(reader, &EventReader::unitsRead, this, &EventList::showUnits);
    connect(reader, &EventReader::problemChanged, this, &EventList::showProblem);
    connect(reader, &EventReader::begun, this, [this](int order) {
        if (order != m_order)
            return;
        m_begunOrder = order;
        m_model.clear();
    });
    connect(reader, &EventReader::newerRead, this, [this](int order, const EventRows& rows) {
        if (order == m_order)
            takeNewer(rows);
    });
    connect(reader, &EventReader::olderRead, this, [this](int order, const EventRows& rows, bool isEnd) {
        if (order == m_order)
            m_model.append(rows, isEnd);
        showCount();
    });
}

void EventList::connectControls()
{
    const auto activated = QOverload<int>::of(&QComboBox::activated);
    connect(m_units, activated, this, [this] {
        setUnit(m_units->currentData().toString());
        emit filterChanged();
    });
    connect(m_kinds, activated, this, [this] {
        setKinds(EventKinds::Set(m_kinds->currentData().toInt()));
        emit filterChanged();
    });
    connect(m_export, &QPushButton::clicked, this, &EventList::askAndExport);
    connect(&m_model, &EventModel::olderWanted, this,
            [this](qint64 beforeId) { emit olderWanted(m_order, beforeId); });
    connect(m_view, &EventView::activated, this, [this](const QModelIndex& index) {
        const EventRow row = m_model.at(index.row());
        emit eventActivated(row.unit, row.utcMs);
    });
}

void EventList::setUnit(const QString& unit)
{
    if (unit == m_filter.unit)
        return;
    m_filter.unit = unit;
    selectUnit();
    restart();
}

void EventList::setKinds(EventKinds::Set kinds)
{
    const int index = m_kinds->findData(int(kinds));
    if (index < 0 || kinds == m_filter.kinds)
        return;
    m_kinds->setCurrentIndex(index);
    m_filter.kinds = kinds;
    restart();
}

// What is shown stays until the first events of the new order are there: no flicker.
void EventList::restart()
{
    ++m_order;
    m_thread.reader()->expect(m_order);
    emit beginWanted(m_order, m_filter);
    if (!m_problem->text().isEmpty())
        m_model.clear(); // nothing follows for now, and these are not what was asked for
    showCount();
}

void EventList::takeNewer(const EventRows& rows)
{
    m_model.prepend(rows);
    // A list that stays open for months holds no more than one that was opened today.
    if (m_model.rowCount() > maxIdleRows && m_view->verticalScrollBar()->value() == 0)
        m_model.trim(keptIdleRows);
    showCount();
}

void EventList::showUnits(const QStringList& units)
{
    m_units->clear();
    m_units->addItem(tr("All units"), QString());
    for (const QString& unit : units)
        m_units->addItem(unit, unit);
    selectUnit();
}

void EventList::selectUnit()
{
    int index = m_units->findData(m_filter.unit);
    if (index < 0) {
        m_units->addItem(m_filter.unit, m_filter.unit);
        index = m_units->count() - 1;
    }
    m_units->setCurrentIndex(index);
}

void EventList::showProblem(const QString& line)
{
    m_problem->setText(line);
    m_problem->setVisible(!line.isEmpty());
    m_export->setEnabled(line.isEmpty() && !m_job);
    if (!line.isEmpty() && m_begunOrder != m_order)
        m_model.clear();
    showCount();
}

void EventList::showNotice(const QString& line)
{
    m_notice->setText(line);
    m_notice->setVisible(!line.isEmpty());
}

void EventList::showCount()
{
    const int count = m_model.rowCount();
    const QString number = QLocale().toString(count);
    if (!m_model.isComplete())
        m_count->setText(tr("the newest %1").arg(number));
    else
        m_count->setText(count == 1 ? tr("1 event") : tr("%1 events").arg(number));
    if (count == 0)
        m_count->clear(); // it keeps its place between the others
    const bool isFiltered = !m_filter.unit.isEmpty() || m_filter.kinds != EventKinds::all;
    if (!m_problem->text().isEmpty())
        m_view->setEmptyText({});
    else if (!m_model.isComplete())
        m_view->setEmptyText(tr("Reading..."));
    else
        m_view->setEmptyText(isFiltered ? tr("No such events") : tr("No events yet"));
}

void EventList::askAndExport()
{
    QString name = m_filter.unit.isEmpty() ? QStringLiteral("events.csv")
                                           : QStringLiteral("events-%1.csv").arg(m_filter.unit);
    name.replace(QLatin1Char('/'), QLatin1Char('_')); // a unit's name is no path
    const QString file =
        QFileDialog::getSaveFileName(this, tr("Export events"), name, tr("CSV files (*.csv);;All files (*)"));
    if (!file.isEmpty())
        exportTo(file);
}

void EventList::exportTo(const QString& targetFile)
{
    if (m_job)
        return;
    m_job = new ExportJob(
        {m_journalFile, targetFile, {}, {}, m_filter.unit, EventKinds::condition(m_filter.kinds)}, this);
    connect(m_job, &ExportJob::finished, this, &EventList::finishExport);
    m_export->setEnabled(false);
    showNotice(tr("Exporting to %1...").arg(QDir::toNativeSeparators(targetFile)));
    m_job->start();
}

void EventList::finishExport()
{
    const QString target = QDir::toNativeSeparators(m_job->targetFile());
    const QString error = m_job->error();
    m_job->deleteLater();
    m_job = nullptr;
    m_export->setEnabled(m_problem->text().isEmpty());
    showNotice(error.isEmpty() ? tr("Exported to %1").arg(target)
                               : tr("Nothing was exported: %1").arg(error));
}
