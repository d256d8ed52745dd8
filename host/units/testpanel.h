#pragma once

#include "unitentry.h"

#include <QWidget>

#include <memory>

class CheckThread;
struct RunningPort;
class QLabel;
class QPlainTextEdit;
class QPushButton;

/// Tests a unit as it is entered, stored or not, and shows what the check tells while it goes on.
class TestPanel : public QWidget
{
    Q_OBJECT

public:
    explicit TestPanel(QWidget* parent = nullptr);
    /// Waits for a check that still runs to end after its connection attempt or read.
    ~TestPanel() override;

    /// Begins to check a unit whose settings are right.
    void start(const UnitEntry& unit, const LineEntry& line, const RunningPort& runningPort);
    /// Shows no more of a check that runs; it ends by itself.
    void cancel();
    bool isRunning() const { return m_thread != nullptr; }

signals:
    /// The button was pressed while no check runs.
    void startRequested();
    /// The check has ended, cancelled or not.
    void ended();

private:
    void press();
    void showEnd(bool hasAnswered);

    QPushButton* m_button;
    QLabel* m_status;
    QPlainTextEdit* m_output;
    std::unique_ptr<CheckThread> m_thread; // null while no check runs
    QString m_unitName;                    ///< of the last check
    bool m_isCancelled = false;
};
