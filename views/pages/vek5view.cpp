#include "vek5view.h"

#include "commandpages.h"
#include "controlbuttons.h"
#include "dialog.h"
#include "energyline.h"
#include "msgbox.h"
#include "pagetabs.h"
#include "pagetext.h"
#include "realtimepage.h"
#include "vek5_10_30k_view.h"

#include <QDateTimeEdit>
#include <QFileDialog>
#include <QGridLayout>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QTabWidget>
#include <QWheelEvent>
#include <QtDebug>

namespace {

enum Tab
{
    overviewTab,
    alarmTab,
    realtimeTab,
    controlTab,
    maintenanceTab
};

constexpr int timeCommand = 1011;
constexpr int upgradeCommand = 1018;
constexpr int settingCommand = 2016;
constexpr int operatorLevel = 1;
constexpr int wheelStep = 120; // angle of one notch, in eighths of a degree
constexpr int rowsPerStep = 3;
// "Battery numbers:", "Battery AH:", "Charge current limit:", "LCD backlight lighten time:"
constexpr int operatorPoints[] = {3017, 3018, 3023, 3028};

// The leak check knows this function by its name: what it makes stays on purpose.
Q_NEVER_INLINE vek5_10_30k_View* makeLastingHolder()
{
    return new vek5_10_30k_View;
}

} // namespace

vek5View::vek5View(QWidget* parent)
    : CollectView(parent)
    , m_dialog(new Dialog)
{
    connect(m_dialog, &Dialog::postDEvent, this, &vek5View::showRequest);
    connect(m_dialog, &Dialog::postDEvent, this, &CollectView::postDEvent);
}

vek5View::~vek5View()
{
    delete m_dialog;
}

void vek5View::setName(QString n)
{
    m_name = n;
}

void vek5View::refreshData()
{
    // Whichever page is open: an alarm's time is when it was first seen, not when somebody looked.
    m_alarmTimes.take(m_data, QDateTime::currentDateTime());
    if (m_tabs)
        UpdatePointTabInfo(m_tabs->currentIndex());
}

void vek5View::flushData(QMap<int, QVariant> d)
{
    m_data = d;
    m_isDataKnown = true;
    refreshData();
}

void vek5View::setUserInfo(QString user, int level)
{
    Q_UNUSED(user)
    m_userLevel = level;
    m_isUserKnown = true;
    applyUserLevel();
    // Whoever takes over does not finish what another one began.
    if (m_dialogRecord && (m_userLevel <= 0 || !maySet(*m_dialogRecord)))
        m_dialog->reject();
}

void vek5View::refreshLayout()
{
    if (!m_holder)
        m_holder = makeLastingHolder();
    m_alarmTexts = m_holder->getAlarmList();
    if (!m_tabs)
        makePages();
    if (m_isUserKnown)
        applyUserLevel();
    refreshKnown();
}

// Until the first data map the pages show that nothing is known, not zeros.
void vek5View::refreshKnown()
{
    if (m_isDataKnown)
        refreshData();
}

void vek5View::makePages()
{
    delete layout(); // left behind by pages that a host deleted
    auto* grid = new QGridLayout(this);
    grid->setObjectName(QStringLiteral("vek5View_grid"));
    grid->setContentsMargins(0, 0, 0, 0);
    m_tabs = new PageTabs(this);
    m_tabs->setObjectName(QStringLiteral("devStacketTable"));
    // A disabled tab vanishes. Before there are pages, which would all be polished again.
    m_tabs->setStyleSheet(QStringLiteral("QTabBar::tab:disabled {width: 0; color: transparent;}"));
    grid->addWidget(m_tabs, 0, 0);

    m_diagram = new Energyline;
    m_diagram->setObjectName(QStringLiteral("OverviewTable"));
    m_diagram->set_all_off_Flow();
    m_realtimePage = new RealtimePage;
    m_controlPage = new ControlPage;
    m_maintenancePage = new MaintenancePage;
    m_tabs->addTab(m_diagram, tr("Overview"));
    m_tabs->addTab(m_realtimePage, tr("RT-data"));
    m_tabs->addTab(m_controlPage, tr("Control"));
    m_tabs->addTab(m_maintenancePage, tr("Maintenance"));
    makeAlarmPage();
    m_realtimePage->setPanels({{tr("DEVICE"), m_holder->getDeviceData()},
                               {tr("OUTPUT"), m_holder->getOutputData()},
                               {tr("INPUT"), m_holder->getInputData()},
                               {tr("BYPASS"), m_holder->getBypassData()},
                               {tr("BATTERY"), m_holder->getBatteryData()},
                               {tr("REC/INV"), m_holder->getRecInvData()}});
    fillControlPage();
    for (QPushButton* button : m_controlPage->buttons() + m_maintenancePage->buttons())
        connect(button, &QPushButton::clicked, this, &vek5View::pushButtonSlot);
    connect(m_tabs, &QTabWidget::currentChanged, this, &vek5View::refreshKnown);
}

void vek5View::fillControlPage()
{
    m_controlPage->setTables(
        {{QStringLiteral("basicTable"), tr("Basic parameters"), m_holder->getBasicConfig()},
         {QStringLiteral("batteryTable"), tr("Battery parameters"), m_holder->getBatteryConfig()},
         {QStringLiteral("adjustTable"), tr("Adjusting parameters"), m_holder->getAdjustConfig()},
         {QStringLiteral("devinforTable"), tr("UPS information"), m_holder->getDevInfoConfig()}});
    for (SettingsTable* table : m_controlPage->tables())
        connect(table, &SettingsTable::cellDoubleClicked, this, &vek5View::slot_doubleClicked);
}

void vek5View::makeAlarmPage()
{
    auto* page = new QScrollArea;
    page->setObjectName(QStringLiteral("AlarmTable"));
    page->setFrameShape(QFrame::NoFrame);
    page->setWidgetResizable(true);
    m_alarmTable = new AlarmTable;
    m_alarmTable->setAccessibleName(tr("Alarm"));
    page->setWidget(m_alarmTable);
    m_tabs->insertTab(alarmTab, page, tr("Alarm"));
}

void vek5View::applyUserLevel()
{
    if (!m_tabs)
        return;
    if (m_controlPage)
        m_controlPage->setEnabled(m_userLevel != 0);
    m_tabs->setTabEnabled(maintenanceTab, m_userLevel != 0);
    // The bar gives its tabs their widths anew with a text, not with what is enabled.
    m_tabs->setTabText(maintenanceTab, m_tabs->tabText(maintenanceTab));
}

void vek5View::UpdatePointTabInfo(int index)
{
    if (index == overviewTab && m_diagram)
        m_diagram->flushData(m_data);
    else if (index == alarmTab && m_alarmTable)
        showAlarms();
    else if (index == realtimeTab && m_realtimePage)
        m_realtimePage->refresh(m_data);
    else if (index == controlTab && m_controlPage)
        m_controlPage->refresh(m_data);
}

void vek5View::showAlarms()
{
    m_alarmTable->setPlaceholder(m_data.isEmpty() ? QString() : tr("No active alarms"));
    m_alarmTable->showAlarms(m_alarmTimes.active(), m_alarmTexts);
}

void vek5View::pushButtonSlot()
{
    const auto* button = qobject_cast<QAbstractButton*>(sender());
    if (!button)
        return;
    const QString name = button->objectName();
    // What runs while the question is open may delete this view.
    const QPointer<vek5View> guard(this);
    if (isConfirmed(button->text() + QLatin1Char('?')) && guard)
        dispatch(name);
}

bool vek5View::isConfirmed(const QString& question)
{
    const QPointer<MsgBox> box = new MsgBox(MsgBox::question, question, this);
    const bool isAccepted = box->exec() == QDialog::Accepted;
    delete box;
    return isAccepted;
}

void vek5View::dispatch(const QString& buttonName)
{
    for (const controlbuttons::Button& button : controlbuttons::buttons) {
        if (buttonName != QLatin1String(button.objectName))
            continue;
        if (button.commandId == controlbuttons::downloadCommand)
            download();
        else
            control(button.commandId, QString());
        return;
    }
    // Pages of sister ranges lay these two out.
    if (buttonName == QLatin1String("timeSet"))
        sendTime();
    else if (buttonName == QLatin1String("ups_upgrade"))
        startUpgrade();
    else
        control(settingCommand, QStringLiteral("1,300")); // deliberate: hosts add buttons that rely on it
}

void vek5View::sendTime()
{
    if (const auto* editor = findChild<QDateTimeEdit*>(QStringLiteral("timeEdit")))
        control(timeCommand, editor->text());
}

void vek5View::startUpgrade()
{
    const QStringList arguments = {m_upgradeArgument, QString::number(m_language)};
    control(upgradeCommand, QString());
    const QString folder = QCoreApplication::applicationDirPath();
    const QString tool = QStringLiteral("QN410L3_20KV5Software.exe");
    // Not every system looks for a program in the folder of the one that starts it.
    const QString beside = QStandardPaths::findExecutable(tool, {folder});
    if (!QProcess::startDetached(beside.isEmpty() ? tool : beside, arguments, folder))
        qDebug("the upgrade tool %s does not start from %s", qPrintable(tool), qPrintable(folder));
}

void vek5View::download()
{
    const QPointer<vek5View> guard(this);
    const QPointer<QFileDialog> chooser = new QFileDialog(this, tr("Save"), QString(), tr("files(*.csv)"));
    chooser->setAcceptMode(QFileDialog::AcceptSave);
    chooser->setDefaultSuffix(QStringLiteral("csv"));
    QString fileName;
    if (chooser->exec() == QDialog::Accepted && chooser)
        fileName = chooser->selectedFiles().value(0);
    delete chooser;
    if (!guard)
        return;
    QFile file(fileName);
    if (!fileName.isEmpty() && !file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        // Sending the name all the same would have the history fetched and dropped, and success reported.
        const QPointer<MsgBox> box = new MsgBox(
            MsgBox::notice, tr("%1 cannot be written: %2").arg(fileName, file.errorString()), this);
        box->exec();
        delete box;
        return;
    }
    file.close();
    // Without a name the command is sent as well: deliberate, it is how hosts have the history emptied.
    control(controlbuttons::downloadCommand, fileName);
}

bool vek5View::maySet(const ParameterInformation& record) const
{
    return m_userLevel > operatorLevel || std::find(std::begin(operatorPoints), std::end(operatorPoints),
                                                    record.pointId) != std::end(operatorPoints);
}

void vek5View::slot_doubleClicked(int row, int column)
{
    Q_UNUSED(column)
    const auto* table = qobject_cast<SettingsTable*>(sender());
    ParameterInformation* record = table ? table->record(row) : nullptr;
    if (!record || !maySet(*record))
        return;
    m_dialogRecord = record;
    m_dialog->initial(record);
    if (m_data.contains(record->pointId))
        m_dialog->setPresentValue(m_data.value(record->pointId).toInt());
    m_dialog->setDevName(m_name);
    if (m_userLevel > 0)
        m_dialog->show();
}

void vek5View::showRequest(int type, const QMap<QString, QVariant>& map)
{
    Q_UNUSED(type)
    Q_UNUSED(map)
    if (!m_controlPage || !m_dialogRecord)
        return;
    for (SettingsTable* table : m_controlPage->tables())
        table->showValueText(m_dialogRecord);
}

void vek5View::wheelEvent(QWheelEvent* event)
{
    // A disabled page takes no wheel, but whoever may not set values may read them all.
    if (!m_controlPage || m_controlPage->isEnabled() || !m_controlPage->isVisible()) {
        CollectView::wheelEvent(event);
        return;
    }
    for (SettingsTable* table : m_controlPage->tables()) {
        if (table->isVisible())
            table->scrollRows(-event->angleDelta().y() / wheelStep * rowsPerStep);
    }
}
