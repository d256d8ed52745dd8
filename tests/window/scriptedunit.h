#pragma once

#include "collectthread.h"
#include "collectview.h"

#include <QDialog>
#include <QPointer>

#include <atomic>

using DataMap = QMap<int, QVariant>;

/// Pages that note what they are given, with a setting dialog as parentless as a unit's.
class ScriptedView : public CollectView
{
    Q_OBJECT

public:
    void flushData(DataMap d) override
    {
        CollectView::flushData(d);
        ++flushCount;
    }
    QSize minimumSizeHint() const override { return {890, 726}; }

    int flushCount = 0;
    QDialog dialog;
};

/// A collector whose unit does what the test says. Without start() the test tells the events itself.
class ScriptedUnit : public CollectThread
{
    Q_OBJECT

public:
    ~ScriptedUnit() override;

    int control(int id, QString value) override;
    QStringList changeLogData(DataMap data) override;
    CollectView* getView() override;
    void loadConfig() override;

    /// A report with values, preceded by the first answer unless the unit has answered before.
    void answer(const DataMap& data);
    /// A report of a unit that does not answer: it repeats the last values.
    void beSilent();

    QStringList controls; ///< "id=value" of each command
    QPointer<ScriptedView> view;
    std::atomic<int> configMs{0};    ///< what reading the settings takes
    std::atomic<int> cycleMs{20};    ///< what a cycle takes, however it is asked to end
    std::atomic<bool> isDark{false}; ///< never answers

protected:
    void run() override;

private:
    void report(int type, const DataMap& data);

    DataMap m_last;
};
