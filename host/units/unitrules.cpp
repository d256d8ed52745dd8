#include "unitrules.h"

#include "settingstext.h"

namespace {

/// A text that must be a whole number, and its range.
struct NumberRule
{
    UnitField field;
    QString UnitEntry::*text;
    int minimum;
    int maximum;
};

// clang-format off
constexpr NumberRule numberRules[] = {
    {UnitField::TcpPort,   &UnitEntry::tcpPort,   1, 65535},
    {UnitField::Address,   &UnitEntry::address,   1,   255}, // over TCP more than on a line
    {UnitField::Retries,   &UnitEntry::retries,   0,  1000},
    {UnitField::IntervalS, &UnitEntry::intervalS, 0, 86400},
};
// clang-format on

constexpr int maxSerialAddress = 247;
// Time-outs are in force in steps of 100 ms, counted by eight bits.
constexpr int minTimeoutMs = 100;
constexpr int maxTimeoutMs = 25500;

bool isSameTcpTarget(const UnitEntry& a, const UnitEntry& b)
{
    return a.isTcp() && b.isTcp() && !a.host.isEmpty() && a.host == b.host &&
           a.tcpPort.toInt() == b.tcpPort.toInt();
}

bool areOnLines(const UnitEntry& a, const UnitEntry& b)
{
    return !a.isTcp() && !b.isTcp() && !a.portName.isEmpty() && !b.portName.isEmpty();
}

} // namespace

QString UnitRules::numberError(const QString& text, int minimum, int maximum)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber && number >= minimum && number <= maximum)
        return {};
    return tr("A whole number from %1 to %2 is needed").arg(minimum).arg(maximum);
}

QString UnitRules::nameError(const UnitConfig& config, int index)
{
    const QString& name = config.units[index].name;
    if (name.isEmpty())
        return tr("The unit needs a name");
    if (name.compare(QLatin1String("General"), Qt::CaseInsensitive) == 0)
        return tr("This name has a meaning of its own in the file");
    const bool isSelection = QString(QLatin1Char('/') + name).endsWith(QLatin1String("/eventChooseList"));
    if (isSelection || unitentry::lineSection(name) != name)
        return tr("Not allowed: eventChooseList, or \"/\" at an end or doubled");
    for (int other = 0; other < config.units.size(); ++other) {
        if (other != index && config.units[other].name == name)
            return tr("Another unit has this name");
    }
    return {};
}

UnitRules::Errors UnitRules::errors(const UnitConfig& config, int index)
{
    Errors errors;
    const UnitEntry& unit = config.units[index];
    const auto note = [&](UnitField field, const QString& error) {
        if (!error.isEmpty())
            errors.insert(field, error);
    };
    note(UnitField::Name, nameError(config, index));
    if (!numberError(unit.commType, 0, 1).isEmpty())
        note(UnitField::Transport, tr("Choose how the unit is connected"));
    for (const NumberRule& rule : numberRules) {
        const bool isSerialAddress = rule.field == UnitField::Address && !unit.isTcp();
        note(rule.field,
             numberError(unit.*rule.text, rule.minimum, isSerialAddress ? maxSerialAddress : rule.maximum));
    }
    if (unit.isTcp()) {
        if (unit.host.isEmpty())
            note(UnitField::Host, tr("The unit's host name or IP address is needed"));
        return errors;
    }
    const LineEntry line = config.lines.value(unitentry::lineSection(unit.portName));
    if (unit.portName.isEmpty())
        note(UnitField::PortName, tr("The serial port is needed, such as /dev/ttyUSB0"));
    if (parseSettings(line.param).error != SettingsError::None)
        note(UnitField::Line, tr("Choose speed, parity, data bits and stop bits"));
    note(UnitField::TimeoutMs, numberError(line.timeoutMs, minTimeoutMs, maxTimeoutMs));
    return errors;
}

QStringList UnitRules::unitsOnPort(const UnitConfig& config, int index)
{
    QStringList names;
    for (int other = 0; other < config.units.size(); ++other) {
        const UnitEntry& a = config.units[index];
        const UnitEntry& b = config.units[other];
        if (other != index && areOnLines(a, b) &&
            unitentry::lineSection(a.portName) == unitentry::lineSection(b.portName))
            names += b.name;
    }
    return names;
}

QStringList UnitRules::warnings(const UnitConfig& config, int index, const DeviceOf& deviceOf)
{
    QStringList warnings;
    const UnitEntry& unit = config.units[index];
    for (int i = 0; i < config.units.size(); ++i) {
        const UnitEntry& other = config.units[i];
        if (i == index)
            continue;
        const bool isSamePort = areOnLines(unit, other) && unit.portName == other.portName;
        const bool isSameDevice =
            areOnLines(unit, other) && deviceOf(unit.portName) == deviceOf(other.portName);
        if ((isSameDevice || isSameTcpTarget(unit, other)) && unit.address.toInt() == other.address.toInt())
            warnings +=
                tr("%1 has the same address at the same place: both would show one unit").arg(other.name);
        if (!isSameDevice || isSamePort)
            continue;
        const bool isAgreed = config.lines.value(unitentry::lineSection(unit.portName)) ==
                              config.lines.value(unitentry::lineSection(other.portName));
        warnings += isAgreed ? tr("%1 is on the same line under the name %2: give both one name, or their "
                                  "queries collide")
                                   .arg(other.name, other.portName)
                             : tr("%1 is on the same line under the name %2 with other line settings: give "
                                  "both one name")
                                   .arg(other.name, other.portName);
    }
    return warnings;
}
