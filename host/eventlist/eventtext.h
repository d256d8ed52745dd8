#pragma once

#include "journalrecord.h"

#include <QCoreApplication>

/// Events of a journal as lines for people. Pure functions of the event and the installed translators.
class EventText
{
    Q_DECLARE_TR_FUNCTIONS(EventText)

public:
    /// One line, never empty: what happened, without time and unit.
    static QString describe(const JournalEvent& event);

private:
    static QString settingText(const JournalEvent& event);
    static QString statusText(const JournalEvent& event);
    static QString commandText(const JournalEvent& event);
    static QString commandName(int id);
};
