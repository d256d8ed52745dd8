#include "mainwindow.h"

#include "lowerarea.h"
#include "unitdelegate.h"
#include "unitlistmodel.h"
#include "unitsession.h"
#include "veil.h"
#include "wheelguard.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QMenuBar>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// clang-format off
constexpr UserLevel userLevels[] = {
    {QT_TRANSLATE_NOOP("MainWindow", "View"),     "guest",    0},
    {QT_TRANSLATE_NOOP("MainWindow", "Operate"),  "operator", 1},
    {QT_TRANSLATE_NOOP("MainWindow", "Engineer"), "engineer", 2},
};
// clang-format on
constexpr int guest = 0;

constexpr QSize usualSize{1440, 900};
constexpr int unitAreaWidth = 264;
constexpr int pageHeight = 730;    // of what a unit's pages ask for
constexpr int diagramHeight = 536; // of what they show at their top: the whole flow, without its panels
// With the tabs. Few events leave the diagram whole in a window 720 pixels high; trends are for looking back,
// and want all their plots.
constexpr LowerHeight eventHeight{128, 220};
constexpr LowerHeight trendHeight{470, 470};
constexpr double mostOfHeight = 0.6; // for what is below

const auto geometryKey = QStringLiteral("window/geometry");
const auto columnsKey = QStringLiteral("window/columns");
const auto lowerTabKey = QStringLiteral("window/lowerTab");
const auto lowerHeightsKey = QStringLiteral("window/lowerHeights");
const auto unitKey = QStringLiteral("window/unit");

} // namespace

MainWindow::MainWindow(const QVector<UnitSession*>& units, int language, QWidget* parent)
    : QMainWindow(parent)
    , m_units(units)
    , m_language(language)
    , m_model(new UnitListModel(units, this))
{
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(tr("UPS units"));
    m_columns = new QSplitter(Qt::Horizontal);
    m_columns->setObjectName(QStringLiteral("Columns"));
    m_columns->setChildrenCollapsible(false);
    m_columns->addWidget(makeUnitArea());
    m_columns->addWidget(makePageArea());
    m_columns->setStretchFactor(1, 1);
    m_columns->setSizes({unitAreaWidth, usualSize.width() - unitAreaWidth});
    setCentralWidget(m_columns);
    makeMenus();
    makeLevelChooser();

    connect(&m_requests, &RequestWatch::told, m_lower, &LowerArea::tell);
    for (UnitSession* unit : m_units)
        connect(unit, &UnitSession::eventReceived, this, [this, unit](int type, const QVariantMap& record) {
            m_requests.takeEvent(*unit, type, record);
        });
    resize(usualSize.boundedTo(QApplication::primaryScreen()->availableSize()));
    m_list->setFocus();
}

void MainWindow::setEventList(QWidget* eventList)
{
    addLowerTab(eventList, eventHeight, tr("Events"), Qt::Key_E);
}

void MainWindow::setTrends(QWidget* trends)
{
    m_openTrends = addLowerTab(trends, trendHeight, tr("Trends"), Qt::Key_T);
}

void MainWindow::addUnitAction(QAction* action)
{
    m_unitMenu->addAction(action);
}

QString MainWindow::shownUnit() const
{
    return m_shownRow < 0 ? QString() : m_units.at(m_shownRow)->name();
}

void MainWindow::selectUnit(const QString& name)
{
    for (int row = 0; row < m_units.size(); ++row) {
        if (m_units.at(row)->name() == name)
            m_list->setCurrentIndex(m_model->index(row));
    }
}

void MainWindow::openTrends()
{
    m_openTrends->trigger();
}

void MainWindow::setWaiting(const QString& reason)
{
    closePageDialogs();
    for (QWidget* part : {static_cast<QWidget*>(m_unitMenu), static_cast<QWidget*>(m_windowMenu),
                          static_cast<QWidget*>(m_level), centralWidget()})
        part->setEnabled(false);
    m_waiting = new Veil(this, Veil::Ground::Solid); // what lies below is not live any more
    m_waiting->setTexts(reason, tr("Those that are busy end their query first."), false);
    m_waiting->setGeometry(centralWidget()->geometry());
    m_waiting->show();
}

void MainWindow::restore(const QSettings& memory)
{
    restoreGeometry(memory.value(geometryKey).toByteArray());
    m_columns->restoreState(memory.value(columnsKey).toByteArray());
    const QVariantList heights = memory.value(lowerHeightsKey).toList();
    for (int tab = 0; tab < qMin(heights.size(), m_lower->count()); ++tab) {
        if (heights.at(tab).toInt() > 0)
            m_lowerHeights[tab] = heights.at(tab).toInt();
    }
    m_lower->setCurrent(memory.value(lowerTabKey).toInt());
    selectUnit(memory.value(unitKey).toString());
}

void MainWindow::remember(QSettings& memory) const
{
    memory.setValue(geometryKey, saveGeometry());
    memory.setValue(columnsKey, m_columns->saveState());
    QVariantList heights;
    for (int tab = 0; tab < m_lower->count(); ++tab)
        heights += m_lowerHeights.value(tab);
    memory.setValue(lowerHeightsKey, heights);
    memory.setValue(lowerTabKey, m_lower->current());
    memory.setValue(unitKey, shownUnit());
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (m_shownRow >= 0)
        return;
    showUnit(qMax(0, m_list->currentIndex().row()));
    applyLowerHeight();
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (m_waiting)
        m_waiting->setGeometry(centralWidget()->geometry());
    if (isVisible())
        applyLowerHeight();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    event->ignore();
    emit closeRequested();
}

QWidget* MainWindow::makeUnitArea()
{
    auto* area = new QWidget;
    area->setObjectName(QStringLiteral("UnitArea"));
    auto* layout = new QVBoxLayout(area);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_list = new QListView;
    m_list->setObjectName(QStringLiteral("UnitList"));
    m_list->setAccessibleName(tr("Units"));
    m_list->setModel(m_model);
    m_list->setItemDelegate(new UnitDelegate(m_list));
    m_list->setUniformItemSizes(true);
    m_list->setMouseTracking(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setMinimumWidth(200);
    auto* count = new QLabel(tr("Units: %1").arg(m_units.size()));
    count->setObjectName(QStringLiteral("UnitCounts"));
    m_silentCount = new QLabel;
    m_silentCount->setObjectName(QStringLiteral("SilentCount"));
    auto* header = new QHBoxLayout;
    header->setSpacing(0);
    header->addWidget(count);
    header->addStretch();
    header->addWidget(m_silentCount);
    layout->addLayout(header);
    layout->addWidget(m_list);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                if (isVisible())
                    showUnit(current.row());
            });
    // A click on the unit that is shown already means it, too: the trends may be another's.
    connect(m_list, &QListView::clicked, this, [this] { emit unitShown(shownUnit()); });
    connect(m_model, &QAbstractItemModel::dataChanged, this, &MainWindow::updateSilentCount);
    return area;
}

QWidget* MainWindow::makePageArea()
{
    m_panes = new QStackedWidget;
    m_panes->setObjectName(QStringLiteral("UnitPanes"));
    m_lower = new LowerArea;
    m_rows = new QSplitter(Qt::Vertical);
    m_rows->setObjectName(QStringLiteral("Rows"));
    m_rows->addWidget(m_panes);
    m_rows->addWidget(m_lower);
    m_rows->setChildrenCollapsible(false);
    m_rows->setStretchFactor(0, 1);
    connect(m_lower, &LowerArea::currentChanged, this, &MainWindow::applyLowerHeight);
    connect(m_rows, &QSplitter::splitterMoved, this,
            [this] { m_lowerHeights[m_lower->current()] = m_rows->sizes().value(1); });
    return m_rows;
}

void MainWindow::makeMenus()
{
    menuBar()->setNativeMenuBar(false); // the level chooser stands in its corner
    QMenu* program = menuBar()->addMenu(tr("&Program"));
    program->addAction(tr("&Quit"), this, &MainWindow::close, QKeySequence(Qt::CTRL + Qt::Key_Q));
    m_unitMenu = menuBar()->addMenu(tr("&Units"));
    m_unitMenu->addAction(
        tr("&Next unit"), this, [this] { stepUnit(1); }, QKeySequence(Qt::CTRL + Qt::Key_Down));
    m_unitMenu->addAction(
        tr("&Previous unit"), this, [this] { stepUnit(-1); }, QKeySequence(Qt::CTRL + Qt::Key_Up));
    m_windowMenu = menuBar()->addMenu(tr("&Window"));
    m_windowMenu->addAction(tr("To the next &area"), this, &MainWindow::focusNextArea,
                            QKeySequence(Qt::Key_F6));
}

void MainWindow::makeLevelChooser()
{
    auto* corner = new QWidget;
    corner->setObjectName(QStringLiteral("LevelArea"));
    auto* layout = new QHBoxLayout(corner);
    layout->setContentsMargins(0, 2, 8, 2);
    m_level = new QComboBox;
    m_level->setObjectName(QStringLiteral("LevelChooser"));
    m_level->setAccessibleName(tr("User level"));
    m_level->setToolTip(
        tr("View: look only. Operate: commands and everyday settings. Engineer: every setting."));
    for (const UserLevel& user : userLevels)
        m_level->addItem(tr(user.title));
    WheelGuard::guard(*m_level); // nobody becomes an engineer by scrolling
    auto* label = new QLabel(tr("User &level:"));
    label->setBuddy(m_level);
    layout->addWidget(label);
    layout->addWidget(m_level);
    connect(m_level, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &MainWindow::setUser);
    menuBar()->setCornerWidget(corner);
}

QAction* MainWindow::addLowerTab(QWidget* content, LowerHeight wanted, const QString& title, Qt::Key key)
{
    const int tab = m_lower->addTab(content, title);
    m_wantedHeights += wanted;
    const auto open = [this, tab] {
        m_lower->setCurrent(tab);
        if (m_lower->height() <= m_lower->minimumHeight()) { // pulled down
            m_lowerHeights.remove(tab);
            applyLowerHeight();
        }
        m_lower->setFocus(Qt::ShortcutFocusReason);
    };
    return m_windowMenu->addAction(title, this, open, QKeySequence(Qt::CTRL + key));
}

void MainWindow::showUnit(int row)
{
    if (row < 0 || row >= m_units.size() || row == m_shownRow)
        return;
    closePageDialogs();
    m_shownRow = row;
    UnitPane*& pane = m_paneOfUnit[row];
    if (!pane) {
        pane = new UnitPane(*m_units.at(row), userLevels[m_level->currentIndex()], m_language);
        connect(pane, &UnitPane::requested, &m_requests, &RequestWatch::follow);
        m_panes->addWidget(pane);
    }
    m_panes->setCurrentWidget(pane);
    m_list->setCurrentIndex(m_model->index(row));
    emit unitShown(shownUnit());
}

void MainWindow::stepUnit(int step)
{
    const int row = m_shownRow + step;
    if (row >= 0 && row < m_units.size())
        m_list->setCurrentIndex(m_model->index(row));
}

void MainWindow::setUser(int index)
{
    closePageDialogs();
    for (UnitPane* pane : qAsConst(m_paneOfUnit))
        pane->setUser(userLevels[index]);
}

void MainWindow::focusNextArea()
{
    const QVector<QWidget*> areas{m_list, m_panes->currentWidget(), m_lower, m_level};
    const QWidget* focused = focusWidget();
    const auto isHere = [focused](const QWidget* area) {
        return area == focused || (focused && area->isAncestorOf(focused));
    };
    const auto here = std::find_if(areas.begin(), areas.end(), isHere);
    int next = here == areas.end() ? 0 : static_cast<int>(here - areas.begin()) + 1;
    while (next < areas.size() && !areas.at(next)->isVisible())
        ++next;
    areas.value(next, m_list)->setFocus(Qt::TabFocusReason);
}

void MainWindow::updateSilentCount()
{
    const int silent = m_model->count(UnitSummary::Tone::Silent);
    m_silentCount->setText(silent > 0 ? tr("No answer: %1").arg(silent) : QString());
}

// The pages get what is left, and what is over once they have all they ask for.
void MainWindow::applyLowerHeight()
{
    const int tab = m_lower->current();
    const int height = m_rows->height();
    const LowerHeight wanted = m_wantedHeights.value(tab);
    const int besideDiagram = qMin(wanted.wanted, height - diagramHeight);
    const int least = qMin(wanted.least, qRound(height * mostOfHeight));
    const int usual = std::max({least, besideDiagram, height - pageHeight});
    const int lower = m_lowerHeights.value(tab, usual);
    m_rows->setSizes({height - lower, lower});
}

// A dialog without a parent is the pages' own. It belongs to the unit that was shown and to the level that
// opened it.
void MainWindow::closePageDialogs()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (qobject_cast<QDialog*>(window) && !window->parentWidget())
            window->close();
    }
}
