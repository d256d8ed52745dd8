#pragma once

#include "pagewidgets.h"
#include "picturerun.h"

class UnitSession;
class WindowRunner;

/// Takes pictures of the host's window at work: the diagram on mains and on battery, a setting, trends, and
/// the units dialog with a test. It does what a user would and changes nothing. GUI thread.
class WindowPictures : public PictureRun
{
    Q_OBJECT

public:
    /// Runner, folder and output must outlive the pictures. Before the runner runs; they are taken once it
    /// does, and then it is stopped. limitS is how long they wait for units and their states, in all.
    WindowPictures(WindowRunner& runner, PictureFolder& folder, LineOutput& output, int limitS);

private:
    void takeAll();
    // Each takes pictures and returns false after an error.
    bool takeMains();
    bool takeSetting();
    bool takeUnits();
    bool takeBattery();
    bool takeTrends();
    bool take(const QString& name);

    WindowRunner& m_runner;
    UnitSession* m_unit; // the one whose pages are shown
    PageWidgets m_widgets;
};
