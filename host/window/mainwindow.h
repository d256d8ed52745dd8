#pragma once

#include "requestwatch.h"
#include "unitpane.h"

#include <QMainWindow>
#include <QMap>
#include <QVector>

class LowerArea;
class QAction;
class QComboBox;
class QLabel;
class QListView;
class QSettings;
class QSplitter;
class QStackedWidget;
class UnitListModel;
class Veil;

/// What a tab below the pages gets while the user gives it no height of its own, in pixels: least in every
/// case, wanted as far as the pages' diagram stays whole.
struct LowerHeight
{
    int least = 0;
    int wanted = 0;
};

/// The host's window: the units at the left, the pages of the chosen one in the middle, event list and trends
/// below. GUI thread.
///
/// It starts and stops no unit and does not quit the program: whoever runs the units does, when it hears
/// closeRequested().
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// The sessions must outlive the window. language goes to the units' pages.
    explicit MainWindow(const QVector<UnitSession*>& units, int language, QWidget* parent = nullptr);

    /// The widgets below the pages; the window takes them over. Before the window is shown.
    void setEventList(QWidget* eventList);
    void setTrends(QWidget* trends);
    /// Adds an entry to the menu of the units. The window does not take it over.
    void addUnitAction(QAction* action);

    /// The name of the unit whose pages are shown.
    QString shownUnit() const;
    /// Shows the pages of this unit; nothing happens when there is none.
    void selectUnit(const QString& name);
    /// Shows the trends, and puts the keyboard there.
    void openTrends();
    /// Shows nothing but the reason and takes no more input than the wish to leave. There is no way back.
    void setWaiting(const QString& reason);

    /// Geometry and choices, without the user level: everybody starts as a guest.
    void restore(const QSettings& memory);
    void remember(QSettings& memory) const;

signals:
    /// Another unit's pages are shown; not before the window is.
    void unitShown(const QString& name);
    /// The user wants to leave. The window stays until it is hidden.
    void closeRequested();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* makeUnitArea();
    QWidget* makePageArea();
    void makeMenus();
    void makeLevelChooser();
    QAction* addLowerTab(QWidget* content, LowerHeight wanted, const QString& title, Qt::Key key);
    void showUnit(int row);
    void stepUnit(int step);
    void setUser(int index);
    void focusNextArea();
    void updateSilentCount();
    void applyLowerHeight();
    void closePageDialogs();

    const QVector<UnitSession*> m_units;
    const int m_language;
    UnitListModel* m_model;
    RequestWatch m_requests;
    QLabel* m_silentCount = nullptr;
    QListView* m_list = nullptr;
    QStackedWidget* m_panes = nullptr;
    QMap<int, UnitPane*> m_paneOfUnit; // by row; made when first shown
    LowerArea* m_lower = nullptr;
    QSplitter* m_columns = nullptr;
    QSplitter* m_rows = nullptr;
    QComboBox* m_level = nullptr;
    QMenu* m_unitMenu = nullptr;
    QMenu* m_windowMenu = nullptr;
    Veil* m_waiting = nullptr; // over everything, once the units are being stopped
    QAction* m_openTrends = nullptr;
    int m_shownRow = -1;
    QVector<LowerHeight> m_wantedHeights; // of each tab below
    QMap<int, int> m_lowerHeights;        // of those that the user gave another one
};
