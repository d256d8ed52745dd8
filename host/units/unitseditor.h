#pragma once

#include <QAction>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVector>

#include <functional>

class PortManage;
class UnitsDialog;

/// The menu entry that opens the units dialog, one at a time, and the dialogs whose test outlasts them. GUI
/// thread. It ends without waiting once isBusy() is false.
class UnitsEditor : public QObject
{
    Q_OBJECT

public:
    struct Place
    {
        QString devIniFile;
        QString serialIniFile;
        PortManage* runningPorts = nullptr; ///< of the units that run; must outlive the editor
        QStringList runningUnits;           ///< by their names
    };

    /// Dialogs are children of window, which must outlive the editor.
    UnitsEditor(const Place& place, QWidget& window);
    ~UnitsEditor() override;

    /// To be put into a menu.
    QAction* action() { return &m_action; }
    /// Which unit a dialog shows first; may name none.
    void setShownUnit(const std::function<QString()>& shownUnit) { m_shownUnit = shownUnit; }
    /// Whether a test has not come to its end yet.
    bool isBusy() const;

public slots:
    void open();
    /// Hides the dialog, without asking about changes, and cancels its test.
    void close();

signals:
    /// Both files have been written: the units have to be made anew.
    void unitsChanged();

private:
    void dismiss(UnitsDialog* dialog);

    const Place m_place;
    QWidget& m_window;
    std::function<QString()> m_shownUnit;
    QAction m_action;
    QPointer<UnitsDialog> m_open;
    QVector<UnitsDialog*> m_testing; ///< closed ones
};
