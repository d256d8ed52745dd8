#pragma once

#include "exitcode.h"

#include <QDeadlineTimer>
#include <QObject>

#include <functional>

class LineOutput;
class PictureFolder;
class QPixmap;
class QWidget;
class UnitSession;

/// What runs that take pictures of widgets share: waiting for what is to be shown, and writing it. GUI
/// thread.
class PictureRun : public QObject
{
    Q_OBJECT

public:
    /// Ends the run at its next wait.
    void stop() { m_isStopped = true; }
    /// Ok until something went wrong.
    ExitCode exitCode() const { return m_exitCode; }
    /// What went wrong, in one line.
    QString error() const { return m_error; }

protected:
    /// Folder and output must outlive the run. Waiting ends after limitS seconds in all, from begin() on.
    PictureRun(PictureFolder& folder, LineOutput& output, int limitS);

    void begin();
    bool isStopped() const { return m_isStopped; }

    /// Handles events until the condition is met; what says of what unit nothing came in time.
    bool waitUntil(const std::function<bool()>& isMet, const QString& what);
    /// What supplies a unit's load, as its point tells it.
    enum class Supply
    {
        Mains = 1,
        Battery = 2,
        Bypass = 4
    };
    /// Waits until the unit answers with this supply, and with an active alarm if that is needed.
    bool waitForSupply(const UnitSession& unit, Supply supply, const QString& what,
                       bool isAlarmNeeded = false);
    /// A window and what has opened over it.
    static QPixmap pictureOf(QWidget& window);
    /// Writes a picture and a line of output with its file.
    bool write(const QPixmap& picture, const QString& name);
    /// Notes what went wrong; always false.
    bool fail(ExitCode code, const QString& error);

private:
    PictureFolder& m_folder;
    LineOutput& m_output;
    const int m_limitS;
    QDeadlineTimer m_deadline;
    bool m_isStopped = false;
    ExitCode m_exitCode = ExitCode::Ok;
    QString m_error;
};
