#include "windowpictures.h"

#include "eventlist.h"
#include "trends.h"
#include "unitsdialog.h"
#include "unitsession.h"
#include "userinput.h"
#include "windowrunner.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>

#include <algorithm>

namespace {

constexpr QSize windowSize{1280, 800};
constexpr int engineer = 2; // of the user levels
constexpr int journalMs = 1500;

} // namespace

WindowPictures::WindowPictures(WindowRunner& runner, PictureFolder& folder, LineOutput& output, int limitS)
    : PictureRun(folder, output, limitS)
    , m_runner(runner)
    , m_unit(runner.units().constFirst())
{
    runner.window().resize(windowSize);
    QTimer::singleShot(0, this, &WindowPictures::takeAll);
}

void WindowPictures::takeAll()
{
    begin();
    if (takeMains() && takeSetting() && takeUnits() && takeBattery())
        takeTrends();
    m_runner.stop();
}

bool WindowPictures::takeMains()
{
    const QVector<UnitSession*> units = m_runner.units();
    const auto areHeard = [&units] {
        return std::all_of(units.begin(), units.end(),
                           [](const UnitSession* unit) { return !unit->state().liveData().isEmpty(); });
    };
    const auto hasPages = [this] {
        m_widgets = PageWidgets::find(m_runner.window());
        return m_widgets.missing.isEmpty();
    };
    if (!waitUntil(areHeard, QStringLiteral("answer of every unit")) ||
        !waitUntil(hasPages, QStringLiteral("pages of ") + m_unit->name()))
        return false;
    if (!waitForSupply(*m_unit, Supply::Mains, QStringLiteral("mains")))
        return false;
    m_widgets.togglePanels(PageWidgets::Rectifier | PageWidgets::Input);
    const bool isTaken = take(QStringLiteral("window-mains"));
    m_widgets.togglePanels(PageWidgets::Rectifier | PageWidgets::Input);
    return isTaken;
}

bool WindowPictures::takeSetting()
{
    auto* level = m_runner.window().findChild<QComboBox*>(QStringLiteral("LevelChooser"));
    level->setCurrentIndex(engineer);
    userinput::openTab(*m_widgets.tabs, *m_widgets.settings);
    userinput::openTab(*m_widgets.settings, *m_widgets.battery);
    if (!m_widgets.openDialog(*m_widgets.battery, DialogPage::Value))
        return fail(ExitCode::PictureMissing, QStringLiteral("no battery setting opens the setting dialog"));
    m_widgets.value->selectAll();
    userinput::type(*m_widgets.value, QStringLiteral("36"));
    const bool isTaken = take(QStringLiteral("window-setting"));
    userinput::click(*m_widgets.cancel);
    level->setCurrentIndex(0);
    userinput::openTab(*m_widgets.tabs, *m_widgets.diagram);
    return isTaken;
}

// The last unit: a line that several units share is busy while one is tested.
bool WindowPictures::takeUnits()
{
    m_runner.editor().open();
    auto* dialog = m_runner.window().findChild<UnitsDialog*>();
    dialog->move(m_runner.window().geometry().center() - dialog->rect().center());
    dialog->selectUnit(m_runner.units().constLast()->name());
    userinput::click(*dialog->findChild<QPushButton*>(QStringLiteral("testUnit")));
    const bool isTaken =
        waitUntil([dialog] { return !dialog->isTesting(); }, QStringLiteral("end of the unit's test")) &&
        take(QStringLiteral("window-units"));
    m_runner.editor().close();
    return isTaken;
}

bool WindowPictures::takeBattery()
{
    if (!waitForSupply(*m_unit, Supply::Battery, QStringLiteral("battery supply with an alarm"), true))
        return false;
    m_runner.events().setUnit(m_unit->name());
    m_runner.events().setKinds(EventKinds::AlarmAppeared | EventKinds::AlarmCleared);
    QElapsedTimer sinceAlarm; // which passes through the journal before it is in the list
    sinceAlarm.start();
    const auto areShown = [&] { return m_runner.events().isComplete() && sinceAlarm.hasExpired(journalMs); };
    return waitUntil(areShown, QStringLiteral("alarms of ") + m_unit->name()) &&
           take(QStringLiteral("window-battery"));
}

bool WindowPictures::takeTrends()
{
    m_runner.window().openTrends();
    const auto isRead = [this] { return !m_runner.trends().shown().isEmpty; };
    return waitUntil(isRead, QStringLiteral("trend of ") + m_unit->name()) &&
           take(QStringLiteral("window-trends"));
}

bool WindowPictures::take(const QString& name)
{
    return write(pictureOf(m_runner.window()), name);
}
