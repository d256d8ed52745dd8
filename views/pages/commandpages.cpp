#include "commandpages.h"

#include "pagetext.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace {

constexpr int margin = 16; // px
constexpr int columnGap = 12;
constexpr int rowGap = 10;
constexpr int buttonWidth = 170; // px, at least; a button fills its column
constexpr int tablesHeight = 260;
constexpr int sectionGap = 12;
constexpr int titleRow = 6;
constexpr int stretchColumn = 4; // behind caption and three buttons

QLabel* makeLabel(QWidget* page, const QString& text, const char* name, QFont::Weight weight)
{
    auto* label = new QLabel(text, page);
    label->setObjectName(QLatin1String(name));
    label->setFont(pageFont(weight));
    label->setIndent(0); // a style alone would make it greater
    return label;
}

QGridLayout* makeGrid(QWidget* page, const char* name)
{
    auto* grid = new QGridLayout(page);
    grid->setObjectName(QLatin1String(name));
    grid->setContentsMargins(margin, margin, margin, margin);
    grid->setHorizontalSpacing(columnGap);
    grid->setVerticalSpacing(rowGap);
    grid->setColumnStretch(stretchColumn, 1);
    return grid;
}

} // namespace

CommandPage::CommandPage(const QString& name, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(name);
    setFont(pageFont());
}

QPushButton* CommandPage::addButton(const controlbuttons::Button& entry)
{
    auto* button = new QPushButton(pageText(entry.text), this);
    button->setObjectName(QLatin1String(entry.objectName));
    button->setToolTip(pageText(entry.toolTip));
    button->setAccessibleName(pageText(controlbuttons::captions[entry.group]) + QLatin1Char(' ') +
                              button->text());
    m_buttons << button;
    return button;
}

ControlPage::ControlPage(QWidget* parent)
    : CommandPage(QStringLiteral("ControlTable"), parent)
{}

void ControlPage::setTables(const QList<Table>& tables)
{
    QGridLayout* grid = makeGrid(this, "ControlGrid");
    const QList<controlbuttons::Group> groups = {controlbuttons::buzzer, controlbuttons::startup,
                                                 controlbuttons::manualSwitch, controlbuttons::battery};
    for (int i = 0; i < groups.size(); ++i)
        addRow(grid, i + 1, groups.at(i));
    QLabel* title =
        makeLabel(this, pageText(QT_TRANSLATE_NOOP("vek5View", "Configuration")), "DevBigTitle", QFont::Bold);
    title->setStyleSheet(QStringLiteral("margin-top:20px"));
    grid->addWidget(title, titleRow, 0, 1, -1);
    grid->addWidget(makeTables(tables), titleRow + 1, 0, 1, -1);
    grid->setRowStretch(titleRow + 1, 1);
}

void ControlPage::addRow(QGridLayout* grid, int row, controlbuttons::Group group)
{
    const QString caption = pageText(controlbuttons::captions[group]);
    grid->addWidget(makeLabel(this, caption, "DevSubNameTit", QFont::Normal), row, 0);
    int column = 1;
    for (const controlbuttons::Button& entry : controlbuttons::buttons) {
        if (entry.group != group)
            continue;
        grid->setColumnMinimumWidth(column, buttonWidth);
        grid->addWidget(addButton(entry), row, column++);
    }
}

QTabWidget* ControlPage::makeTables(const QList<Table>& tables)
{
    auto* tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("configStack"));
    tabs->setMinimumHeight(tablesHeight);
    // What hides the main tabs that a user's level forbids would hide these on the disabled page: -1 is as
    // wide as the text.
    tabs->setStyleSheet(QStringLiteral("QTabBar::tab:disabled {width: -1px; color: palette(dark);}"));
    for (const Table& entry : tables) {
        auto* table = new SettingsTable(entry.name);
        tabs->addTab(table, entry.title); // before it has rows, which would be measured again
        table->setRecords(entry.records);
        table->setAccessibleName(entry.title);
        table->setToolTip(
            pageText(QT_TRANSLATE_NOOP("vek5View", "Double-click a row to change its setting")));
        m_tables << table;
    }
    return tabs;
}

void ControlPage::refresh(const QMap<int, QVariant>& points)
{
    for (SettingsTable* table : qAsConst(m_tables))
        table->refresh(points);
}

MaintenancePage::MaintenancePage(QWidget* parent)
    : CommandPage(QStringLiteral("MaintainTable"), parent)
{
    QGridLayout* grid = makeGrid(this, "MaintainGrid");
    addSection(grid, controlbuttons::clear);
    addSection(grid, controlbuttons::plugin);
    grid->setColumnMinimumWidth(0, buttonWidth);
    grid->setRowStretch(grid->rowCount(), 1);
}

void MaintenancePage::addSection(QGridLayout* grid, controlbuttons::Group group)
{
    const QString caption = pageText(controlbuttons::captions[group]);
    grid->addWidget(makeLabel(this, caption, "DevBigTitle", QFont::Bold), grid->rowCount(), 0, 1, -1);
    for (const controlbuttons::Button& entry : controlbuttons::buttons) {
        if (entry.group != group)
            continue;
        const int row = grid->rowCount();
        grid->addWidget(addButton(entry), row, 0);
        grid->addWidget(makeLabel(this, pageText(entry.toolTip), "DevSubNameTit", QFont::Normal), row, 1);
    }
    grid->setRowMinimumHeight(grid->rowCount(), sectionGap);
}
