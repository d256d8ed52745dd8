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

    /// Double-clicks rows of a settings table until one opens this page of the dialog, a value with a range
    /// that an entry can be out of. False when none does.
    bool openDialog(QTableWidget& table, DialogPage page) const;

    /// The diagram's blocks that open panels; the rectifier's opens two.
    enum Panel
    {
        Input = 1,
        Bypass = 2,
        Rectifier = 4,
        Battery = 8,
        Load = 16
    };
    static constexpr int allPanels = Input | Bypass | Rectifier | Battery | Load;
    /// Clicks on the blocks of these panels: closed ones open, open ones close.
    void togglePanels(int panels) const;

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
