#pragma once

#include "unitstate.h"

#include <QCoreApplication>
#include <QDate>
#include <QStringList>

/// One unit at a glance, as the list of units shows it. A plain value.
struct UnitSummary
{
    Q_DECLARE_TR_FUNCTIONS(UnitSummary)

public:
    enum class Tone
    {
        Unheard,   ///< has not answered yet
        Calm,      ///< on mains
        Attention, ///< answers, and runs on anything else
        Danger,    ///< answers, and supplies nothing
        Silent     ///< does not answer: not now, or not once in all the tries that its collector makes
    };

    /// What is known of a unit. logRow is the plugin's data-log row made from the live values.
    static UnitSummary of(const UnitState& state, const QStringList& logRow, const QDate& today);

    /// Since when a silent unit has not answered, "16:03:12", with the date unless that is today.
    static QString sinceText(const QString& silentSince, const QDate& today);

    QString alarmText() const;
    /// Everything in one line, for those who hear it.
    QString spokenText(const QString& unitName) const;

    bool operator==(const UnitSummary& other) const;
    bool operator!=(const UnitSummary& other) const { return !(*this == other); }

    Tone tone = Tone::Unheard;
    QString stateText;
    QString loadText;   ///< the most loaded phase, "Load 34 %"; empty unless the unit answers
    int alarmCount = 0; ///< 0 unless the unit answers
};
