#pragma once

#include "pagewidgets.h"
#include "picturerun.h"
#include "unitpages.h"

#include <QScrollArea>

#include <functional>

class UnitSession;

/// Takes a picture of every page, dialog and box of one unit. It does what a user would: it clicks, types and
/// waits until the unit is in the state to be shown; what it sets is the value that the unit has already. GUI
/// thread.
class PagePictures : public PictureRun
{
    Q_OBJECT

public:
    /// Session, folder and output must outlive the run. Waiting for states ends after limitS seconds in all.
    PagePictures(UnitSession& session, PictureFolder& folder, LineOutput& output, int limitS);

    /// Starts the unit, takes the pictures, a line of output each, and returns; the unit still runs.
    ExitCode run();

private:
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

    bool openDialog(QTableWidget& table, DialogPage page);
    bool withBox(const std::function<void()>& open, const char* button, const QString& name);
    bool waitForValues();

    UnitSession& m_session;
    UnitPages m_pages;
    PageWidgets m_widgets;
    QScrollArea m_window; // ends first, and the pages in it: their collector may go at any time afterwards
};
