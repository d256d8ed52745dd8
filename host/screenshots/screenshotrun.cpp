#include "screenshotrun.h"

#include "collectview.h"
#include "lineoutput.h"
#include "picturefolder.h"
#include "unitsession.h"
#include "userinput.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QEventLoop>
#include <QLineEdit>
#include <QPainter>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>

#include <algorithm>

namespace {

constexpr QSize smallWindow{1024, 700};
constexpr QSize largeWindow{1280, 800};
constexpr int lookIntervalMs = 20;
constexpr int userLevel = 2;   // may set everything
constexpr int rangeColumn = 2; // of a settings table; the present value stands before it

constexpr int supplyPoint = 4250;
enum Supply
{
    Mains = 1,
    Battery = 2,
    Bypass = 4
};
constexpr int firstAlarmPoint = 2000;
constexpr int alarmCount = 512;

// In the diagram's blocks, seen from its centre: input, bypass, rectifier (opens two panels), battery, load.
constexpr QPoint blocks[] = {{-262, 0}, {-262, -150}, {-92, 0}, {0, 117}, {262, 0}};

bool hasAlarm(const QMap<int, QVariant>& data)
{
    return std::any_of(data.lowerBound(firstAlarmPoint), data.lowerBound(firstAlarmPoint + alarmCount),
                       [](const QVariant& state) { return state.toInt() == 1; });
}

// How far above the others a window lies.
int level(const QWidget& window)
{
    if (&window == QApplication::activePopupWidget())
        return 2;
    return &window == QApplication::activeModalWidget() ? 1 : 0;
}

QString cellText(const QTableWidget& table, int row, int column)
{
    const QTableWidgetItem* cell = table.item(row, column);
    return cell ? cell->text() : QString();
}

} // namespace

ScreenshotRun::ScreenshotRun(UnitSession& session, PictureFolder& folder, LineOutput& output, int limitS)
    : m_session(session)
    , m_folder(folder)
    , m_output(output)
    , m_limitS(limitS)
    , m_pages(session, QStringLiteral("engineer"), userLevel)
{
    m_window.setObjectName(QStringLiteral("UnitWindow"));
    m_window.setFrameShape(QFrame::NoFrame);
    m_window.setWidgetResizable(true); // pages larger than a small window scroll
    m_window.setWidget(m_pages.view());
    m_window.resize(smallWindow);
}

ExitCode ScreenshotRun::run()
{
    if (!m_pages.view()) {
        fail(ExitCode::PictureMissing, QStringLiteral("%1 has no pages").arg(m_session.name()));
        return m_exitCode;
    }
    m_widgets = PageWidgets::find(*m_pages.view());
    if (!m_widgets.missing.isEmpty()) {
        fail(ExitCode::PictureMissing,
             QStringLiteral("the pages of %1 have no %2").arg(m_session.name(), m_widgets.missing));
        return m_exitCode;
    }
    m_deadline.setRemainingTime(m_limitS * 1000LL);
    m_session.start();
    m_window.show();
    m_window.activateWindow();
    if (waitForValues() && takeOverview() && takeTabs() && takeSettingPages() && takeBusyPage() &&
        takeQuestion() && takeOnBattery() && takeOnBypass())
        return ExitCode::Ok;
    return m_exitCode;
}

bool ScreenshotRun::waitForValues()
{
    if (waitUntil([this] { return !m_session.state().liveData().isEmpty(); }, QStringLiteral("answer")))
        return true;
    if (!m_isStopped)
        m_exitCode = ExitCode::UnitNotHeard;
    return false;
}

bool ScreenshotRun::takeOverview()
{
    userinput::openTab(*m_widgets.tabs, *m_widgets.diagram);
    if (!waitForSupply(Mains, QStringLiteral("mains")))
        return false;
    bool isTaken = take(QStringLiteral("overview-mains")) && takeLarge(QStringLiteral("overview-mains"));
    toggleAllPanels();
    isTaken = isTaken && take(QStringLiteral("overview-all-panels")) &&
              takeLarge(QStringLiteral("overview-all-panels")) &&
              takeTwofold(QStringLiteral("overview-all-panels"));
    toggleAllPanels();
    return isTaken;
}

bool ScreenshotRun::takeTabs()
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

bool ScreenshotRun::takeSettingPages()
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

bool ScreenshotRun::takeBusyPage()
{
    QTableWidget& table = *m_widgets.battery;
    userinput::openTab(*m_widgets.settings, table);
    if (!openDialog(table, DialogPage::Value))
        return false;
    // What the unit has already: the request must not change it.
    static const QRegularExpression number(QStringLiteral("^-?[0-9.]+"));
    const QString present = number.match(cellText(table, table.currentRow(), rangeColumn - 1)).captured();
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
    return take(QStringLiteral("dialog-busy")) && waitUntil([this] { return !m_widgets.dialog->isVisible(); },
                                                            QStringLiteral("end of the setting dialog"));
}

bool ScreenshotRun::takeQuestion()
{
    return withBox([this] { userinput::click(*m_widgets.batteryTest); }, "btnWhite",
                   QStringLiteral("question"));
}

bool ScreenshotRun::takeOnBattery()
{
    if (!waitForSupply(Battery, QStringLiteral("battery supply with an alarm"), true))
        return false;
    userinput::openTab(*m_widgets.tabs, *m_widgets.alarms);
    if (!take(QStringLiteral("alarms-battery")) || !takeLarge(QStringLiteral("alarms-battery")))
        return false;
    userinput::openTab(*m_widgets.tabs, *m_widgets.diagram);
    if (!take(QStringLiteral("overview-battery")))
        return false;
    toggleAllPanels();
    const bool isTaken = takeLarge(QStringLiteral("overview-battery-all-panels"));
    toggleAllPanels();
    return isTaken;
}

bool ScreenshotRun::takeOnBypass()
{
    userinput::openTab(*m_widgets.tabs, *m_widgets.diagram);
    if (!waitForSupply(Bypass, QStringLiteral("bypass supply")) || !take(QStringLiteral("overview-bypass")))
        return false;
    toggleAllPanels();
    return takeLarge(QStringLiteral("overview-bypass-all-panels"));
}

bool ScreenshotRun::take(const QString& name)
{
    m_window.resize(smallWindow);
    return write(picture(), name);
}

bool ScreenshotRun::takeLarge(const QString& name)
{
    m_window.resize(largeWindow);
    const bool isWritten = write(picture(), QString(name + QStringLiteral("-large")));
    m_window.resize(smallWindow);
    return isWritten;
}

// The diagram as a screen with two pixels for each has it.
bool ScreenshotRun::takeTwofold(const QString& name)
{
    constexpr int ratio = 2;
    QPixmap picture(m_widgets.diagram->size() * ratio);
    picture.setDevicePixelRatio(ratio);
    m_widgets.diagram->render(&picture);
    return write(picture, QString(name + QStringLiteral("-2x")));
}

bool ScreenshotRun::write(const QPixmap& picture, const QString& name)
{
    const QString file = m_folder.add(picture, name);
    if (file.isEmpty())
        return fail(ExitCode::PictureMissing, m_folder.error());
    m_output.write(file.toLocal8Bit());
    return m_output.isOpen() ||
           fail(ExitCode::OutputFailed, QStringLiteral("standard output: %1").arg(m_output.errorText()));
}

// Every panel is closed at first and each block opens its own: all open, or all closed again.
void ScreenshotRun::toggleAllPanels()
{
    const QPoint centre(m_widgets.diagram->width() / 2, m_widgets.diagram->height() / 2);
    for (const QPoint& block : blocks)
        userinput::click(*m_widgets.diagram, centre + block);
}

// Which row opens which page is the pages' own affair: try them. A value must have a range that an entry can
// be out of.
bool ScreenshotRun::openDialog(QTableWidget& table, DialogPage page)
{
    for (int row = 0; row < table.rowCount(); ++row) {
        const bool hasRange = cellText(table, row, rangeColumn).size() > 1;
        if (page == DialogPage::Value && !hasRange)
            continue;
        userinput::doubleClickRow(table, row);
        QCoreApplication::processEvents(); // the dialog gets the focus
        if (m_widgets.dialog->isVisible() && m_widgets.dialogPages->currentIndex() == static_cast<int>(page))
            return true;
        userinput::click(*m_widgets.cancel);
    }
    return fail(ExitCode::PictureMissing, QStringLiteral("no row of %1 opens page %2 of the setting dialog")
                                              .arg(table.objectName(), QString::number(int(page))));
}

// What opens a box returns only after it has been closed: it is looked for meanwhile.
bool ScreenshotRun::withBox(const std::function<void()>& open, const char* button, const QString& name)
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
    look.start(lookIntervalMs);
    open();
    if (!isTaken && m_error.isEmpty())
        fail(ExitCode::PictureMissing, QStringLiteral("no box opened for %1").arg(name));
    return isTaken;
}

bool ScreenshotRun::waitForSupply(int supplyMode, const QString& name, bool isAlarmNeeded)
{
    const auto isMet = [&] {
        const Data& data = m_session.state().liveData();
        return data.value(supplyPoint).toInt() == supplyMode && (!isAlarmNeeded || hasAlarm(data));
    };
    return waitUntil(isMet, QStringLiteral("%1 (point %2 = %3)")
                                .arg(name, QString::number(supplyPoint), QString::number(supplyMode)));
}

bool ScreenshotRun::waitUntil(const std::function<bool()>& isMet, const QString& what)
{
    QEventLoop loop;
    QTimer look;
    connect(&look, &QTimer::timeout, &loop, [&] {
        if (isMet() || m_isStopped || m_deadline.hasExpired())
            loop.quit();
    });
    look.start(lookIntervalMs);
    if (!isMet())
        loop.exec();
    if (isMet())
        return true;
    if (m_isStopped)
        return fail(ExitCode::PictureMissing, QStringLiteral("stopped before all pictures were taken"));
    return fail(ExitCode::PictureMissing, QStringLiteral("waited %1 s: no %2 of %3 came in time")
                                              .arg(QString::number(m_limitS), what, m_session.name()));
}

// The window and what has opened over it.
QPixmap ScreenshotRun::picture()
{
    // Only what lays out is let through, level by level: events of the unit would change the state to be
    // shown.
    for (int level = 0; level < 10; ++level)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QPixmap result = m_window.grab();
    QPainter painter(&result);
    QWidgetList windows = QApplication::topLevelWidgets();
    std::stable_sort(windows.begin(), windows.end(),
                     [](QWidget* a, QWidget* b) { return level(*a) < level(*b); });
    for (QWidget* window : qAsConst(windows)) {
        if (window != &m_window && window->isVisible())
            painter.drawPixmap(window->pos() - m_window.pos(), window->grab());
    }
    return result;
}

bool ScreenshotRun::fail(ExitCode code, const QString& error)
{
    m_exitCode = code;
    m_error = error;
    return false;
}
