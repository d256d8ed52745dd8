#pragma once

#include "exitcode.h"
#include "pagewidgets.h"
#include "unitpages.h"

#include <QDeadlineTimer>
#include <QMap>
#include <QScrollArea>
#include <QVariant>

#include <functional>

class LineOutput;
class PictureFolder;
class UnitSession;

/// Takes a picture of every page, dialog and box of one unit. It does what a user would: it clicks, types and
/// waits until the unit is in the state to be shown; what it sets is the value that the unit has already. GUI
/// thread.
class ScreenshotRun : public QObject
{
    Q_OBJECT

public:
    /// Session, folder and output must outlive the run. Waiting for states ends after limitS seconds in all.
    ScreenshotRun(UnitSession& session, PictureFolder& folder, LineOutput& output, int limitS);

    /// Starts the unit, takes the pictures, a line of output each, and returns; the unit still runs.
    ExitCode run();
    /// Ends run() at the next wait; ignored before it.
    void stop() { m_isStopped = true; }
    /// Why run() did not return Ok, in one line.
    QString error() const { return m_error; }

private:
    using Data = QMap<int, QVariant>;

    // Each takes pictures and returns false after an error.
    bool takeOverview();
    bool takeTabs();
    bool takeSettingPages();
    bool takeBusyPage();
    bool takeQuestion();
    bool takeOnBattery();
    bool takeOnBypass();
    bool take(const QString& name);
    bool takeLarge(const QString& name);
    bool takeTwofold(const QString& name);
    bool write(const QPixmap& picture, const QString& name);

    void toggleAllPanels();
    bool openDialog(QTableWidget& table, DialogPage page);
    bool withBox(const std::function<void()>& open, const char* button, const QString& name);
    bool waitForValues();
    bool waitForSupply(int supplyMode, const QString& name, bool isAlarmNeeded = false);
    bool waitUntil(const std::function<bool()>& isMet, const QString& what);
    QPixmap picture();
    bool fail(ExitCode code, const QString& error);

    UnitSession& m_session;
    PictureFolder& m_folder;
    LineOutput& m_output;
    const int m_limitS;
    QDeadlineTimer m_deadline;
    bool m_isStopped = false;
    ExitCode m_exitCode = ExitCode::Ok;
    QString m_error;
    UnitPages m_pages;
    PageWidgets m_widgets;
    QScrollArea m_window; // ends first, and the pages in it: their collector may go at any time afterwards
};
