#pragma once

#include "unitentry.h"

#include <QCoreApplication>
#include <QStringList>

#include <functional>

/// The fields of a unit that an error can belong to.
enum class UnitField
{
    Name,
    Transport,
    PortName,
    Line,
    TimeoutMs,
    Host,
    TcpPort,
    Address,
    Retries,
    IntervalS
};

/// What is allowed for a unit, told for the one who types it in: what unitlist accepts, and what reads back
/// as it was entered. Pure functions.
class UnitRules
{
    Q_DECLARE_TR_FUNCTIONS(UnitRules)

public:
    using Errors = QMap<UnitField, QString>;

    /// One line for each field of unit number index that is wrong. Fields that its transport does not use are
    /// not looked at, except for numbers, which the host refuses all the same.
    static Errors errors(const UnitConfig& config, int index);

    /// The device behind a port's name, the same for every name that it has.
    using DeviceOf = std::function<QString(const QString& portName)>;

    /// What is allowed and looks like a mistake: what unit number index and others of its port or host
    /// disagree about. One line each.
    static QStringList warnings(const UnitConfig& config, int index, const DeviceOf& deviceOf);

    /// The names of the other units on the serial port of unit number index.
    static QStringList unitsOnPort(const UnitConfig& config, int index);

private:
    static QString nameError(const UnitConfig& config, int index);
    static QString numberError(const QString& text, int minimum, int maximum);
};
