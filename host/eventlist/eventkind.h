#pragma once

#include <QCoreApplication>
#include <QFlags>

#include <optional>

/// What an event is to the operator. Pure functions of its type and state.
class EventKinds
{
    Q_DECLARE_TR_FUNCTIONS(EventKinds)

public:
    enum Kind
    {
        AlarmAppeared = 1,
        AlarmCleared = 2,
        Lost = 4,
        Answering = 8,
        Command = 16, ///< a request of a unit's pages, or its result
        Status = 32   ///< a status point changed
    };
    Q_DECLARE_FLAGS(Set, Kind)

    static constexpr Kind each[] = {AlarmAppeared, AlarmCleared, Lost, Answering, Command, Status};
    static constexpr int all = 63;

    static Kind of(int type, std::optional<int> state);
    /// One word or two, for people.
    static QString name(Kind kind);
    /// The condition on the columns of table "event" that holds for these kinds; empty for all of them.
    static QString condition(Set kinds);
};
Q_DECLARE_OPERATORS_FOR_FLAGS(EventKinds::Set)
