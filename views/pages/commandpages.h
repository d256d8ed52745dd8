#pragma once

#include "controlbuttons.h"
#include "settingstable.h"

#include <QList>
#include <QTabWidget>
#include <QWidget>

class QGridLayout;
class QPushButton;

/// A page of buttons in groups, each button named as in controlbuttons.h.
class CommandPage : public QWidget
{
    Q_OBJECT

public:
    QList<QPushButton*> buttons() const { return m_buttons; }

protected:
    explicit CommandPage(const QString& name, QWidget* parent);
    /// Makes a button of the page; the caller lays it out.
    QPushButton* addButton(const controlbuttons::Button& entry);

private:
    QList<QPushButton*> m_buttons;
};

/// "Control": the unit's operation, and below it the settings tables.
class ControlPage : public CommandPage
{
    Q_OBJECT

public:
    /// A settings table: its object name, the tab's text and the records, which stay the caller's.
    struct Table
    {
        QString name;
        QString title;
        QList<ParameterInformation*> records;
    };

    explicit ControlPage(QWidget* parent = nullptr);

    /// Fills the page, once; it should have its place among other widgets by then.
    void setTables(const QList<Table>& tables);

    QList<SettingsTable*> tables() const { return m_tables; }
    /// Shows the values of a data map in all tables.
    void refresh(const QMap<int, QVariant>& points);

private:
    void addRow(QGridLayout* grid, int row, controlbuttons::Group group);
    QTabWidget* makeTables(const QList<Table>& tables);

    QList<SettingsTable*> m_tables;
};

/// "Maintenance": clearing and the history.
class MaintenancePage : public CommandPage
{
    Q_OBJECT

public:
    explicit MaintenancePage(QWidget* parent = nullptr);

private:
    void addSection(QGridLayout* grid, controlbuttons::Group group);
};
