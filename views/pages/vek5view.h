#pragma once

#include "alarmtable.h"
#include "collectview.h"
#include "parameterinformation.h"

#include <QPointer>

class ControlPage;
class Dialog;
class Energyline;
class MaintenancePage;
class QTabWidget;
class RealtimePage;
class SettingsTable;
class vek5_10_30k_View;

/// The pages of one unit: diagram, alarms, real-time data, control, maintenance. It shows the data maps that
/// it is given and asks for commands through postDEvent; it knows nothing of how the unit is reached. GUI
/// thread only. Whoever receives a request may delete it.
class vek5View : public CollectView
{
    Q_OBJECT

public:
    explicit vek5View(QWidget* parent = nullptr);
    ~vek5View() override;

public slots:
    void setName(QString n) override;
    /// Brings the page that is open up to date, visible or not.
    void refreshData() override;
    void refreshLayout() override;
    void flushData(QMap<int, QVariant> d) override;
    /// Level 0 may not operate: "Control" is disabled and "Maintenance" hidden. The user's name is not kept.
    void setUserInfo(QString user, int level) override;

    /// Asks whether the pressed button is meant, then sends its command.
    void pushButtonSlot();
    /// Opens the setting dialog for a row of the settings table that sends the signal, if the level allows.
    void slot_doubleClicked(int row, int column);

protected:
    /// Scrolls the settings tables for those who may only read them.
    void wheelEvent(QWheelEvent* event) override;

private:
    void refreshKnown();
    void UpdatePointTabInfo(int index);
    void showAlarms();
    void makePages();
    void fillControlPage();
    void makeAlarmPage();
    void applyUserLevel();
    bool isConfirmed(const QString& question);
    void dispatch(const QString& buttonName);
    void sendTime();
    void startUpgrade();
    void download();
    bool maySet(const ParameterInformation& record) const;
    void showRequest(int type, const QMap<QString, QVariant>& map);

    // Never deleted once made: deliberate, hosts and translators may hold its records to the process's end.
    vek5_10_30k_View* m_holder = nullptr;
    Dialog* m_dialog;
    QPointer<QTabWidget> m_tabs;
    QPointer<Energyline> m_diagram;
    QPointer<AlarmTable> m_alarmTable;
    QPointer<RealtimePage> m_realtimePage;
    QPointer<ControlPage> m_controlPage;
    QPointer<MaintenancePage> m_maintenancePage;
    QStringList m_alarmTexts;
    AlarmTimes m_alarmTimes;
    ParameterInformation* m_dialogRecord = nullptr; // what the dialog sets
    bool m_isUserKnown = false;
    bool m_isDataKnown = false; // a data map has come
    QString m_upgradeArgument;  // first argument of the upgrade tool; nothing sets it
};
