#include "pagewidgets.h"

#include "userinput.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>

namespace {

constexpr int rangeColumn = 2; // of a settings table

struct Block
{
    PageWidgets::Panel panel;
    QPoint place; // in the diagram, seen from its centre
};

// clang-format off
constexpr Block blocks[] = {
    {PageWidgets::Input,     {-262,    0}},
    {PageWidgets::Bypass,    {-262, -150}},
    {PageWidgets::Rectifier, { -92,    0}},
    {PageWidgets::Battery,   {   0,  117}},
    {PageWidgets::Load,      { 262,    0}},
};
// clang-format on

// The box that has pages: questions and notices bear the same name.
QDialog* settingDialog()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->objectName() == QLatin1String("WhiteDialog") && window->findChild<QStackedWidget*>())
            return qobject_cast<QDialog*>(window);
    }
    return nullptr;
}

class Finder
{
public:
    /// Looks below parent for the first child of the type and, unless that is null, the name.
    template <typename Widget>
    void find(const QWidget* parent, const char* name, Widget** found)
    {
        if (parent)
            *found = parent->findChild<Widget*>(QString::fromLatin1(name));
        if (!*found && m_missing.isEmpty())
            m_missing =
                QLatin1String(Widget::staticMetaObject.className()) + QLatin1Char(' ') + QLatin1String(name);
    }
    QString missing() const { return m_missing; }

private:
    QString m_missing;
};

} // namespace

PageWidgets PageWidgets::find(const QWidget& view)
{
    Finder finder;
    PageWidgets widgets;
    finder.find(&view, "devStacketTable", &widgets.tabs);
    finder.find(&view, "OverviewTable", &widgets.diagram);
    finder.find(&view, "RecordTable", &widgets.alarms);
    finder.find(&view, "PanelTitle", &widgets.realtimeTitle);
    finder.find(&view, "MaintainTable", &widgets.maintenance);
    finder.find(&view, "configStack", &widgets.settings);
    finder.find(&view, "basicTable", &widgets.basic);
    finder.find(&view, "batteryTable", &widgets.battery);
    finder.find(&view, "adjustTable", &widgets.adjusting);
    finder.find(&view, "devinforTable", &widgets.information);
    finder.find(&view, "battery_test", &widgets.batteryTest);

    widgets.dialog = settingDialog();
    finder.find(widgets.dialog, nullptr, &widgets.dialogPages);
    finder.find(widgets.dialog, nullptr, &widgets.value);
    finder.find(widgets.dialog, nullptr, &widgets.options);
    finder.find(widgets.dialog, "btnBlue", &widgets.ok);
    finder.find(widgets.dialog, "btnWhite", &widgets.cancel);
    widgets.missing = finder.missing();
    return widgets;
}

// Which row opens which page is the pages' own affair: try them.
bool PageWidgets::openDialog(QTableWidget& table, DialogPage page) const
{
    for (int row = 0; row < table.rowCount(); ++row) {
        const QTableWidgetItem* range = table.item(row, rangeColumn);
        const bool hasRange = range && range->text().size() > 1;
        if (page == DialogPage::Value && !hasRange)
            continue;
        userinput::doubleClickRow(table, row);
        QCoreApplication::processEvents(); // the dialog gets the focus
        if (dialog->isVisible() && dialogPages->currentIndex() == static_cast<int>(page))
            return true;
        userinput::click(*cancel);
    }
    return false;
}

void PageWidgets::togglePanels(int panels) const
{
    const QPoint centre(diagram->width() / 2, diagram->height() / 2);
    for (const auto& block : blocks) {
        if (panels & block.panel)
            userinput::click(*diagram, centre + block.place);
    }
}
