#include "pagewidgets.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>

namespace {

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
