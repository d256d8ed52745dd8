#pragma once

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QPair>
#include <QVector>

/// What a host told of a unit that misbehaved for a while, held against what the unit truly did.
namespace faultcourse {

using Values = QVector<QPair<int, float>>; ///< point and value

/// One event of the host. Its record tells the time in whole seconds, and reading it here may be late on a
/// busy machine: it was made between two moments.
struct Report
{
    qint64 earliestMs = 0;
    qint64 latestMs = 0;
    int type = 0;
    bool isLive = false; ///< a data event's values are those of an answer, and no repetition
    Values values;       ///< of a data event only
};

Report reportOf(const QJsonObject& event, qint64 readMs);

/// What the unit held, and when a fault met a request, from the simulator's trace.
class Truth
{
public:
    explicit Truth(const QList<QJsonObject>& trace);

    const QVector<qint64>& faults() const { return m_faults; }
    /// When the unit last held each of these values, looking back from untilMs: that of the value which is
    /// gone the longest, and its point. 0 for a value that it never held.
    QPair<qint64, int> oldest(const Values& values, qint64 untilMs) const;

private:
    qint64 lastHeld(int point, float value, qint64 untilMs) const;

    struct Hold
    {
        qint64 beginMs;
        float value;
    };
    QMap<int, QVector<Hold>> m_holds; ///< by point, in the order of time
    QVector<qint64> m_faults;
};

enum Outcome
{
    Copes, ///< not one query fails
    Fails, ///< every query that it meets: the loss has to be told
    Either ///< queries fail by turns, or meet the late reply of an earlier one
};

struct Expectation
{
    Outcome outcome = Either;
    int faults = 0;       ///< how often it is applied
    int retries = 0;      ///< failed queries in a row after which the loss is told
    qint64 lengthMs = 0;  ///< from the last request that it meets to the unit's return
    qint64 failureMs = 0; ///< what a cycle with a failed query takes at the most
    qint64 pauseMs = 0;   ///< before a connection is made anew
};

/// What is wrong with the reports; empty when nothing is.
QString judge(const Expectation& expected, const QVector<Report>& reports, const Truth& truth);

} // namespace faultcourse
