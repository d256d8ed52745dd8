#include "pagepictures.h"

#include "collectview.h"
#include "unitsession.h"
#include "userinput.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>

namespace {

constexpr QSize smallWindow{1024, 700};
constexpr QSize largeWindow{1280, 800};
constexpr int boxLookMs = 20;
constexpr int userLevel = 2;   // may set everything
constexpr int valueColumn = 1; // of a settings table

} // namespace

PagePictures::PagePictures(UnitSession& session, PictureFolder& folder, LineOutput& output, int limitS)
    : PictureRun(folder, output, limitS)
    , m_session(session)
    , m_pages(session)
{
    m_pages.setUser(QStringLiteral("engineer"), userLevel);
    m_pages.setShown(true);
    m_window.setObjectName(QStringLiteral("UnitWindow"));
    m_window.setFrameShape(QFrame::NoFrame);
    m_window.setWidgetResizable(true); // pages larger than a small window scroll
    m_window.setWidget(m_pages.view());
    m_window.resize(smallWindow);
}

ExitCode PagePictures::run()
{
    if (!m_pages.view()) {
        fail(ExitCode::PictureMissing, QStringLiteral("%1 has no pages").arg(m_session.name()));
        return exitCode();
    }
    m_widgets = PageWidgets::find(*m_pages.view());
    if (!m_widgets.missing.isEmpty()) {
        fail(ExitCode::PictureMissing,
             QStringLiteral("the pages of %1 have no %2").arg(m_session.name(), m_widgets.missing));
        return exitCode();
    }
    begin();
    m_session.start();
    m_window.show();
    m_window.activateWindow();
    if (waitForValues() && takeOverview() && takeTabs() && takeSettingPages() && takeBusyPage() &&
        takeQuestion() && takeOnBattery() && takeOnBypass())
        return ExitCode::Ok;
    return exitCode();
}

bool PagePictures::waitForValues()
{
    const auto isHeard = [this] { return !m_session.state().liveData().isEmpty(); };
    if (waitUntil(isHeard, QStringLiteral("answer of ") + m_session.name()))
        return true;
    return isStopped() ? false : fail(ExitCode::UnitNotHeard, error());
}

bool PagePictures::takeOverview()
{
    userinput::openTab(*m_widgets.tabs, *m_widgets.diagram);
    if (!waitForSupply(m_session, Supply::Mains, QStringLiteral("mains")))
        return false;
    bool isTaken = take(QStringLiteral("overview-mains")) && takeLarge(QStringLiteral("overview-mains"));
    m_widgets.togglePanels(PageWidgets::allPanels);
    isTaken = isTaken && take(QStringLiteral("overview-all-panels")) &&
              takeLarge(QStringLiteral("overview-all-panels")) &&
              takeTwofold(QStringLiteral("overview-all-panels"));
    m_widgets.togglePanels(PageWidgets::allPanels);
    return isTaken;
}

bool PagePictures::takeTabs()
{
    userinput::openTab(*m_widgets.tabs, *m_widgets.alarms);
    if (!take(QStringLiteral("alarms-mains")))
        return false;
    userinput::openTab(*m_widgets.tabs, *m_widgets.realtimeTitle);
    if (!take(QStringLiteral("realtime-data")) || !takeLarge(QStringLiteral("realtime-data")))
        return false;
    userinput::openTab(*m_widgets.tabs, *m_widgets.settings);
    const std::pair<QTableWidget*, const char*> tables[] = {{m_widgets.basic, "control-basic"},
                                                            {m_widgets.battery, "control-battery"},
                                                            {m_widgets.adjusting, "control-adjusting"},
                                                            {m_widgets.information, "control-information"}};
    for (const auto& table : tables) {
        userinput::openTab(*m_widgets.settings, *table.first);
        const QString name = QString::fromLatin1(table.second);
        if (!take(name) || !takeLarge(name))
            return false;
    }
    userinput::openTab(*m_widgets.tabs, *m_widgets.maintenance);
    return take(QStringLiteral("maintenance"));
}

bool PagePictures::takeSettingPages()
{
    userinput::openTab(*m_widgets.tabs, *m_widgets.settings);
    userinput::openTab(*m_widgets.settings, *m_widgets.basic);
    if (!openDialog(*m_widgets.basic, DialogPage::Option) || !take(QStringLiteral("dialog-option")))
        return false;
    m_widgets.options->showPopup();
    const bool isTaken = take(QStringLiteral("dialog-option-list"));
    m_widgets.options->hidePopup();
    userinput::click(*m_widgets.cancel);
    return isTaken;
}

bool PagePictures::takeBusyPage()
{
    QTableWidget& table = *m_widgets.battery;
    userinput::openTab(*m_widgets.settings, table);
    if (!openDialog(table, DialogPage::Value))
        return false;
    // What the unit has already: the request must not change it.
    static const QRegularExpression number(QStringLiteral("^-?[0-9.]+"));
    const QString present = number.match(table.item(table.currentRow(), valueColumn)->text()).captured();
    m_widgets.value->selectAll();
    userinput::type(*m_widgets.value, present);
    if (!take(QStringLiteral("dialog-value")))
        return false;
    m_widgets.value->selectAll();
    userinput::type(*m_widgets.value, QStringLiteral("9999999"));
    if (!withBox([this] { userinput::click(*m_widgets.ok); }, "btnBlue",
                 QStringLiteral("notice-out-of-range")))
        return false;
    m_widgets.value->selectAll();
    userinput::type(*m_widgets.value, present);
    userinput::click(*m_widgets.ok);
    return take(QStringLiteral("dialog-busy")) &&
           waitUntil([this] { return !m_widgets.dialog->isVisible(); },
                     QStringLiteral("end of the setting dialog of ") + m_session.name());
}

bool PagePictures::takeQuestion()
{
    return withBox([this] { userinput::click(*m_widgets.batteryTest); }, "btnWhite",
                   QStringLiteral("question"));
}

bool PagePictures::takeOnBattery()
{
    if (!waitForSupply(m_session, Supply::Battery, QStringLiteral("battery supply with an alarm"), true))
        return false;
    userinput::openTab(*m_widgets.tabs, *m_widgets.alarms);
    if (!take(QStringLiteral("alarms-battery")) || !takeLarge(QStringLiteral("alarms-battery")))
        return false;
    userinput::openTab(*m_widgets.tabs, *m_widgets.diagram);
    if (!take(QStringLiteral("overview-battery")))
        return false;
    m_widgets.togglePanels(PageWidgets::allPanels);
    const bool isTaken = takeLarge(QStringLiteral("overview-battery-all-panels"));
    m_widgets.togglePanels(PageWidgets::allPanels);
    return isTaken;
}

bool PagePictures::takeOnBypass()
{
    userinput::openTab(*m_widgets.tabs, *m_widgets.diagram);
    if (!waitForSupply(m_session, Supply::Bypass, QStringLiteral("bypass supply")) ||
        !take(QStringLiteral("overview-bypass")))
        return false;
    m_widgets.togglePanels(PageWidgets::allPanels);
    return takeLarge(QStringLiteral("overview-bypass-all-panels"));
}

bool PagePictures::take(const QString& name)
{
    m_window.resize(smallWindow);
    return write(pictureOf(m_window), name);
}

bool PagePictures::takeLarge(const QString& name)
{
    m_window.resize(largeWindow);
    const bool isWritten = write(pictureOf(m_window), QString(name + QStringLiteral("-large")));
    m_window.resize(smallWindow);
    return isWritten;
}

// The diagram as a screen with two pixels for each has it.
bool PagePictures::takeTwofold(const QString& name)
{
    constexpr int ratio = 2;
    QPixmap picture(m_widgets.diagram->size() * ratio);
    picture.setDevicePixelRatio(ratio);
    m_widgets.diagram->render(&picture);
    return write(picture, QString(name + QStringLiteral("-2x")));
}

bool PagePictures::openDialog(QTableWidget& table, DialogPage page)
{
    return m_widgets.openDialog(table, page) ||
           fail(ExitCode::PictureMissing, QStringLiteral("no row of %1 opens page %2 of the setting dialog")
                                              .arg(table.objectName(), QString::number(int(page))));
}

// What opens a box returns only after it has been closed: it is looked for meanwhile.
bool PagePictures::withBox(const std::function<void()>& open, const char* button, const QString& name)
{
    bool isTaken = false;
    QTimer look;
    connect(&look, &QTimer::timeout, &m_window, [&] {
        auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!box)
            return;
        look.stop();
        isTaken = take(name);
        if (auto* answer = box->findChild<QAbstractButton*>(QLatin1String(button)))
            userinput::click(*answer);
        if (box->isVisible())
            box->reject();
    });
    look.start(boxLookMs);
    open();
    if (!isTaken && error().isEmpty())
        fail(ExitCode::PictureMissing, QStringLiteral("no box opened for %1").arg(name));
    return isTaken;
}
