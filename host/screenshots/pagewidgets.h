#pragma once

#include <QString>

class QAbstractButton;
class QComboBox;
class QDialog;
class QLineEdit;
class QStackedWidget;
class QTabWidget;
class QTableWidget;
class QWidget;

/// The pages of the setting dialog's stack.
enum class DialogPage
{
    Value,
    Option,
    Busy
};

/// The widgets of a unit's pages that a screenshot run needs. They are found by their object names, which are
/// what a host may know of them.
struct PageWidgets
{
    /// Finds them in laid out pages and among the program's windows; missing names the first one that is not
    /// there.
    static PageWidgets find(const QWidget& view);

    QString missing; ///< empty when all are there

    QTabWidget* tabs = nullptr;
    QWidget* diagram = nullptr;
    QTableWidget* alarms = nullptr;
    QWidget* realtimeTitle = nullptr; ///< the first panel's
    QWidget* maintenance = nullptr;
    QTabWidget* settings = nullptr;
    QTableWidget* basic = nullptr;
    QTableWidget* battery = nullptr;
    QTableWidget* adjusting = nullptr;
    QTableWidget* information = nullptr;
    QAbstractButton* batteryTest = nullptr;

    QDialog* dialog = nullptr;
    QStackedWidget* dialogPages = nullptr;
    QLineEdit* value = nullptr;
    QComboBox* options = nullptr;
    QAbstractButton* ok = nullptr;
    QAbstractButton* cancel = nullptr;
};
