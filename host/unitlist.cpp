#include "unitlist.h"

#include "settingstext.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <algorithm>
#include <climits>

namespace {

/// A key that holds a whole number, and the values that make sense.
struct NumericKey
{
    const char* key;
    int minimum;
    int maximum;
};

// clang-format off
constexpr NumericKey numericKeys[] = {
    {"addr",           1,    255}, // over TCP more than on a line
    {"retries",        0,   1000},
    {"protocol", INT_MIN, INT_MAX},
    {"interval",       0,  86400}, // seconds
    {"commType",       0,      1}, // serial line, TCP
    {"port",           1,  65535},
};
// clang-format on

constexpr int maxSerialAddress = 247; // 0 is the broadcast, which nobody answers; the rest is reserved

/// Lines of an INI file as people count them. QSettings knows neither their order nor their numbers.
struct IniLines
{
    QStringList sections; // in the order of the file
    int firstBadLine = 0; // 0 when none is
};

IniLines scanLines(const QString& fileName)
{
    IniLines result;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return result;
    for (int number = 1; !file.atEnd(); ++number) {
        const QByteArray line = file.readLine().trimmed();
        const int sectionEnd = line.indexOf(']'); // a comment may follow
        if (line.startsWith('[') && sectionEnd > 0)
            result.sections += QString::fromLatin1(line.mid(1, sectionEnd - 1).trimmed());
        else if (result.firstBadLine == 0 && !line.isEmpty() && !line.startsWith(';') &&
                 !line.startsWith('#') && !line.contains('='))
            result.firstBadLine = number;
    }
    return result;
}

// The group that a key belongs to; the event selection lies in a group of its own inside the unit's.
QString unitOfKey(const QString& key)
{
    QString unit = key.section(QLatin1Char('/'), 0, -2);
    const QString selection = QStringLiteral("/eventChooseList");
    if (unit.endsWith(selection))
        unit.chop(selection.size());
    return unit;
}

QStringList unitNames(const QSettings& settings, const QStringList& sectionOrder)
{
    QStringList names;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys)
        names += unitOfKey(key);
    names.removeAll(QString()); // keys that stand outside any group are nobody's
    names.removeDuplicates();
    const auto position = [&](const QString& name) {
        const int index = sectionOrder.indexOf(name);
        return index < 0 ? sectionOrder.size() : index;
    };
    std::stable_sort(names.begin(), names.end(),
                     [&](const QString& a, const QString& b) { return position(a) < position(b); });
    return names;
}

// Names and values may hold ends of lines, written as escapes; what is wrong with them is told in one line.
QString inOneLine(QString text)
{
    for (QChar& character : text) {
        if (!character.isPrint())
            character = QLatin1Char('?');
    }
    return text;
}

QString textOf(const QVariant& value)
{
    return value.toStringList().join(QLatin1Char(','));
}

QString numberError(const QSettings& settings, const QString& key, int minimum, int maximum)
{
    if (!settings.contains(key))
        return {};
    bool isNumber = false;
    const QVariant value = settings.value(key);
    const int number = value.toInt(&isNumber);
    if (isNumber && number >= minimum && number <= maximum)
        return {};
    const QString range =
        minimum == INT_MIN ? QString() : QStringLiteral(" from %1 to %2").arg(minimum).arg(maximum);
    return QStringLiteral("%1=%2: a whole number%3 is needed").arg(key, textOf(value), range);
}

QString transportError(const QSettings& settings, const QString& prefix)
{
    const bool isTcp = settings.value(prefix + QLatin1String("commType")).toInt() == 1;
    const QString key = prefix + (isTcp ? QLatin1String("ipAddr") : QLatin1String("portName"));
    // As the plugin reads it: an unquoted comma makes a list, whose text is empty.
    if (!settings.value(key).toString().isEmpty())
        return isTcp ? QString() : numberError(settings, prefix + QLatin1String("addr"), 1, maxSerialAddress);
    return isTcp ? QStringLiteral("%1 is missing: a unit on TCP (commType=1) needs its host").arg(key)
                 : QStringLiteral("%1 is missing: name the serial port, or set commType=1 for TCP").arg(key);
}

QString settingsError(const QSettings& settings, const QString& unitName)
{
    const QString prefix = unitName + QLatin1Char('/');
    for (const NumericKey& row : numericKeys) {
        QString error = numberError(settings, prefix + QLatin1String(row.key), row.minimum, row.maximum);
        if (!error.isEmpty())
            return error;
    }
    return transportError(settings, prefix);
}

QString fileError(const QString& file)
{
    const QFileInfo info(file);
    if (!info.exists())
        return QStringLiteral("no such file");
    if (!info.isFile())
        return QStringLiteral("not a file");
    if (!info.isReadable())
        return QStringLiteral("permission denied");
    return {};
}

QString badLineText(int number)
{
    return QStringLiteral("line %1 is neither [section] nor key=value").arg(number);
}

QString contentError(const QSettings& settings, const IniLines& lines, const QStringList& names)
{
    if (settings.status() != QSettings::NoError || lines.firstBadLine != 0)
        return lines.firstBadLine == 0 ? QStringLiteral("not a valid INI file")
                                       : badLineText(lines.firstBadLine);
    // [General] means "no group" to QSettings, so the plugin would not find the keys of a unit of that name.
    if (settings.contains(QStringLiteral("portName")) || settings.contains(QStringLiteral("ipAddr")))
        return QStringLiteral("a unit's keys need a section of their own, and its name cannot be [General]");
    for (const QString& section : lines.sections) {
        // A name that is written with escapes is known by another text here, and is let pass.
        const QString unit = unitOfKey(QString(section + QLatin1String("/key")));
        if (!names.contains(unit) && !section.contains(QLatin1Char('%')))
            return QStringLiteral("[%1] has no keys: give the unit a port, or remove the section")
                .arg(section);
    }
    if (names.isEmpty())
        return QStringLiteral("no unit in it: add a section with the unit's name and its keys");
    for (const QString& name : names) {
        QString error = settingsError(settings, name);
        if (!error.isEmpty())
            return error;
    }
    return {};
}

// Time-outs are in force in steps of 100 ms; below the first one reads would not wait at all.
constexpr int minTimeoutMs = 100;
constexpr int maxTimeoutMs = 25500;

// A file that is there and cannot be read would be passed over, and every port get the defaults.
QString lineFileError(const QString& file)
{
    if (!QFileInfo::exists(file))
        return {};
    const QString error = fileError(file);
    const int badLine = error.isEmpty() ? scanLines(file).firstBadLine : 0;
    return badLine == 0 ? error : badLineText(badLine);
}

QString portError(const QSettings& lines, const QString& port)
{
    const QString paramKey = port + QLatin1String("/param");
    if (lines.contains(paramKey) && parseSettings(textOf(lines.value(paramKey))).error != SettingsError::None)
        return QStringLiteral("param=%1: write speed, parity, data bits and stop bits as in 9600,n,8,1")
            .arg(textOf(lines.value(paramKey)));
    return numberError(lines, QString(port + QLatin1String("/timeout")), minTimeoutMs, maxTimeoutMs);
}

} // namespace

QString unitlist::lineError(const QString& serialFile, const QString& deviceFile, const QStringList& units)
{
    const QSettings devices(deviceFile, QSettings::IniFormat);
    const QSettings lines(serialFile, QSettings::IniFormat);
    for (const QString& unit : units) {
        if (devices.value(unit + QLatin1String("/commType")).toInt() == 1)
            continue;
        const QString fileProblem = lineFileError(serialFile);
        if (!fileProblem.isEmpty())
            return QString(serialFile + QStringLiteral(": ") + fileProblem);
        const QString port = devices.value(unit + QLatin1String("/portName")).toString();
        const QString error = portError(lines, port);
        if (!error.isEmpty())
            return inOneLine(QStringLiteral("%1: port %2 of %3: %4").arg(serialFile, port, unit, error));
    }
    return {};
}

QString unitlist::defaultFile()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/PVMX/drovaPanel/db/dev.ini");
}

QString unitlist::lineFile()
{
    return QStringLiteral("serial.ini");
}

UnitList unitlist::read(const QString& file)
{
    UnitList result;
    result.error = fileError(file);
    if (result.error.isEmpty()) {
        const QSettings settings(file, QSettings::IniFormat);
        const IniLines lines = scanLines(file);
        result.names = unitNames(settings, lines.sections);
        result.error = contentError(settings, lines, result.names);
    }
    if (!result.error.isEmpty())
        return {{}, inOneLine(file + QStringLiteral(": ") + result.error)};
    return result;
}

UnitList unitlist::select(const QStringList& configured, const QStringList& wanted)
{
    for (const QString& name : wanted) {
        if (!configured.contains(name))
            return {{},
                    QStringLiteral("unknown unit \"%1\"; configured: %2")
                        .arg(name, configured.join(QStringLiteral(", ")))};
    }
    return {wanted.isEmpty() ? configured : wanted, {}};
}

UnitChoice unitlist::choose(const QStringList& wanted)
{
    const UnitList configured = read(defaultFile());
    if (!configured.error.isEmpty())
        return {{}, {}, configured.error, true};
    const UnitList selected = select(configured.names, wanted);
    if (!selected.error.isEmpty())
        return {configured.names, {}, selected.error, false};
    return {configured.names, selected.names, lineError(lineFile(), defaultFile(), selected.names), true};
}

QStringList unitlist::afterChange(const QStringList& running, const QStringList& earlier,
                                  const QStringList& now)
{
    QStringList names;
    for (const QString& name : now) {
        if (running.contains(name) || !earlier.contains(name))
            names += name;
    }
    return names.isEmpty() ? now : names;
}
