#pragma once

#include "unitfiles.h"

#include <QDialog>

class PortManage;
class QDialogButtonBox;
class QLabel;
class QPushButton;
class QTableWidget;
class TestPanel;
class UnitForm;

/// Adds, edits, removes and tests the units of "dev.ini" and the settings of their ports in "serial.ini".
/// Nothing is written before Save, and then both files or neither. Units that run go on with what they have
/// read: after unitsChanged() make them anew. An object is for one use: make another for the next.
///
/// A test may still run when the dialog is closed, for as long as its connection attempt or read takes.
/// Deleting the dialog waits for it; to wait without blocking, deleteLater() it once isTesting() is false
/// (see testEnded()). The plugin and the running ports must outlive it. The host must ignore SIGPIPE.
class UnitsDialog : public QDialog
{
    Q_OBJECT

public:
    /// Reads both files at once; missing ones are made when units are saved.
    UnitsDialog(const QString& devIniFile, const QString& serialIniFile, QWidget* parent = nullptr);
    ~UnitsDialog() override;

    /// The port manager of the units that run, so that a test and a unit do not speak on one port at the same
    /// time. Without it a test is for hosts that run no unit. Must outlive the dialog.
    void setRunningPorts(PortManage* ports, const QStringList& runningUnits)
    {
        m_runningPorts = ports;
        m_runningUnits = runningUnits;
    }
    /// Says above everything why the dialog opened when the user did not ask for it.
    void explain(const QString& reason);
    bool isTesting() const;
    /// Selects the unit of this name, to show it at once.
    void selectUnit(const QString& name);

    /// Asks before changes are lost. What it does not ask about: deletion.
    void reject() override;
    void done(int result) override;

signals:
    /// The files have been written; GUI thread. The dialog is closed afterwards.
    void unitsChanged();
    /// A test has ended; GUI thread.
    void testEnded();

private:
    QWidget* makeList();
    QWidget* makeUnitSide();
    QDialogButtonBox* makeButtons();
    void load();
    void showUnit();
    void takeUnit();
    void takeLine();
    void showFindings();
    void showRow(int row);
    void addUnit();
    void removeUnit();
    void testUnit();
    void save();
    /// Goes to the first thing that is wrong with a unit from first to last; true when there is one.
    bool showFirstError(int first, int last);
    void showProblem(const QString& text);
    int current() const;
    QString freeName() const;
    void setChanged();

    UnitFiles m_files;
    UnitConfig m_config; // as edited
    bool m_isEditable = false;
    PortManage* m_runningPorts = nullptr;
    QStringList m_runningUnits;
    QLabel* m_notice;
    QLabel* m_problem;
    QTableWidget* m_table;
    QPushButton* m_add;
    QPushButton* m_remove;
    QWidget* m_unitSide;
    UnitForm* m_form;
    QLabel* m_warnings;
    TestPanel* m_test;
    QPushButton* m_save;
    QPushButton* m_readAgain;
};
