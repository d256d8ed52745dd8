#include "unitfiles.h"

#include "inidocument.h"
#include "pairedfiles.h"
#include "unitlist.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>

#include <algorithm>

namespace {

// The event selection of a unit lies in a group of its own inside the unit's.
QLatin1String selectionGroup()
{
    return QLatin1String("/eventChooseList");
}

QString lockFileOf(const QString& devFile)
{
    return devFile + QStringLiteral(".lock");
}

/// Reads a whole file; false with the reason when it is there and cannot be read.
bool readAll(const QString& name, QByteArray* text, QString* reason)
{
    text->clear();
    const QFileInfo info(name);
    if (!info.exists() && !info.isSymLink())
        return true;
    QFile file(name);
    // A pipe would never end.
    if (info.exists() && !info.isFile()) {
        *reason = UnitFiles::tr("not a file");
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *reason = file.errorString();
        return false;
    }
    *text = file.readAll();
    *reason = file.error() == QFile::NoError ? QString() : file.errorString();
    return file.error() == QFile::NoError;
}

// The unit that a key of "dev.ini" belongs to.
QString unitOfGroup(const QString& group)
{
    return group.endsWith(selectionGroup()) ? group.left(group.size() - selectionGroup().size()) : group;
}

UnitEntry readUnit(const QSettings& settings, const QString& name)
{
    UnitEntry unit;
    unit.storedName = name;
    unit.name = name;
    for (const UnitKey& row : unitKeys) {
        const QString key = name + QLatin1Char('/') + QLatin1String(row.key);
        // A list, from commas without quotes, is an empty text to the plugin too.
        unit.*row.text = settings.value(key, unit.*row.text).toString();
    }
    return unit;
}

LineEntry readLine(const QSettings& settings, const QString& section)
{
    const LineEntry defaults;
    const auto value = [&](const char* key, const QString& defaultText) {
        return settings.value(QString(section + QLatin1Char('/') + QLatin1String(key)), defaultText)
            .toStringList()
            .join(QLatin1Char(','));
    };
    return {value("param", defaults.param), value("timeout", defaults.timeoutMs)};
}

const UnitEntry* find(const QVector<UnitEntry>& units, QString UnitEntry::*text, const QString& wanted)
{
    const auto found = std::find_if(units.cbegin(), units.cend(),
                                    [&](const UnitEntry& unit) { return unit.*text == wanted; });
    return found == units.cend() ? nullptr : &*found;
}

/// Keys of a unit that the file has to hold and does not, or with another value.
QVector<const UnitKey*> changedKeys(const UnitEntry& unit, const QVector<UnitEntry>& stored)
{
    const UnitEntry* before = find(stored, &UnitEntry::storedName, unit.storedName);
    QVector<const UnitKey*> rows;
    for (const UnitKey& row : unitKeys) {
        // A new unit has all that it uses spelled out, for people.
        const bool isNew = !before && (unit.isTcp() ? row.isOnTcp : row.isOnLine);
        if (isNew || (before && before->*row.text != unit.*row.text))
            rows += &row;
    }
    return rows;
}

} // namespace

UnitFiles::UnitFiles(const QString& devIniFile, const QString& serialIniFile)
    : m_devFile(devIniFile)
    , m_serialFile(serialIniFile)
{}

void UnitFiles::recover(const QString& devIniFile, const QString& serialIniFile)
{
    QLockFile lock(lockFileOf(devIniFile));
    if (lock.tryLock())
        PairedFiles::recover(devIniFile, serialIniFile);
}

QString UnitFiles::load()
{
    recover(m_devFile, m_serialFile);
    m_stored = {};
    QString reason;
    if (!readAll(m_devFile, &m_devText, &reason))
        return tr("%1 cannot be read: %2").arg(m_devFile, reason);
    if (!readAll(m_serialFile, &m_serialText, &reason))
        return tr("%1 cannot be read: %2").arg(m_serialFile, reason);
    const IniDocument devices(m_devText);
    const IniDocument lines(m_serialText);
    if (devices.firstBadLine() != 0)
        return tr("%1, line %2: neither [section] nor key=value: correct it with a text editor")
            .arg(m_devFile, QString::number(devices.firstBadLine()));

    const QSettings unitValues(m_devFile, QSettings::IniFormat);
    const QStringList groups = devices.groups();
    QStringList names;
    for (const QString& group : groups)
        names += unitOfGroup(group);
    names.removeAll(QString());
    names.removeDuplicates();
    for (const QString& name : qAsConst(names))
        m_stored.units += readUnit(unitValues, name);
    const QSettings lineValues(m_serialFile, QSettings::IniFormat);
    const QStringList ports = lines.groups();
    for (const QString& section : ports)
        m_stored.lines.insert(section, readLine(lineValues, section));
    return {};
}

QString UnitFiles::save(const UnitConfig& edited)
{
    QLockFile lock(lockFileOf(m_devFile));
    QDir().mkpath(QFileInfo(m_devFile).absolutePath()); // the lock lies there
    if (!lock.tryLock() && lock.error() == QLockFile::LockFailedError)
        return tr("%1: another program is saving it: try again").arg(m_devFile);
    QByteArray devNow;
    QByteArray serialNow;
    QString reason;
    if (!readAll(m_devFile, &devNow, &reason) || !readAll(m_serialFile, &serialNow, &reason) ||
        devNow != m_devText || serialNow != m_serialText)
        return tr("%1: changed by another program meanwhile: close this, open it again")
            .arg(devNow != m_devText ? m_devFile : m_serialFile);

    PairedFiles files({m_devFile, m_devText, editedDevices(edited)},
                      {m_serialFile, m_serialText, editedLines(edited)});
    if (!files.prepare())
        return files.error();
    QString error = checkCandidates(edited, files.candidate(0), files.candidate(1));
    if (!error.isEmpty())
        return error;
    return files.commit() ? QString() : files.error();
}

QByteArray UnitFiles::editedDevices(const UnitConfig& edited) const
{
    IniDocument document(m_devText);
    const auto rename = [&](const QString& from, const QString& to) {
        document.renameSection(from, to);
        document.renameSection(QString(from + selectionGroup()), QString(to + selectionGroup()));
    };
    for (const UnitEntry& unit : m_stored.units) {
        if (!find(edited.units, &UnitEntry::storedName, unit.storedName)) {
            document.removeSection(unit.storedName);
            document.removeSection(QString(unit.storedName + selectionGroup()));
        }
    }
    // By way of names that no unit has: two may have swapped theirs.
    const auto passing = [](int index) { return QStringLiteral("\u0001%1").arg(index); };
    for (int i = 0; i < edited.units.size(); ++i) {
        const UnitEntry& unit = edited.units[i];
        if (!unit.storedName.isEmpty() && unit.storedName != unit.name)
            rename(unit.storedName, passing(i));
    }
    for (int i = 0; i < edited.units.size(); ++i) {
        const UnitEntry& unit = edited.units[i];
        rename(passing(i), unit.name);
        const auto rows = changedKeys(unit, m_stored.units);
        for (const UnitKey* row : rows)
            document.setValue(unit.name, QLatin1String(row->key), unit.*row->text);
    }
    return document.text();
}

QByteArray UnitFiles::editedLines(const UnitConfig& edited) const
{
    IniDocument document(m_serialText);
    for (const UnitEntry& unit : edited.units) {
        const QString section = unitentry::lineSection(unit.portName);
        const LineEntry before = m_stored.lines.value(section);
        const LineEntry line = edited.lines.value(section);
        if (unit.isTcp() || line == before)
            continue;
        const bool isNew = !m_stored.lines.contains(section);
        if (isNew || line.param != before.param)
            document.setValue(section, QStringLiteral("param"), line.param);
        if (isNew || line.timeoutMs != before.timeoutMs)
            document.setValue(section, QStringLiteral("timeout"), line.timeoutMs);
    }
    return document.text();
}

// The host's own rules, and that every key, known or not, reads as it is meant to: hand-written files have
// forms (a key in two places, a unit's keys in another's section) that an edit could miss.
QString UnitFiles::checkCandidates(const UnitConfig& edited, const QString& devFile,
                                   const QString& serialFile) const
{
    const UnitList units = unitlist::read(devFile);
    QString error = units.error;
    if (error.isEmpty())
        error = unitlist::lineError(serialFile, devFile, units.names);
    error.replace(devFile, m_devFile);
    error.replace(serialFile, m_serialFile);
    if (!error.isEmpty())
        return error;
    if (valuesIn(devFile) != expectedDevices(edited))
        return tr("%1 is written in a way that cannot be changed here: use a text editor").arg(m_devFile);
    const QSettings lines(serialFile, QSettings::IniFormat);
    for (const UnitEntry& unit : edited.units) {
        const QString section = unitentry::lineSection(unit.portName);
        if (!unit.isTcp() && !(readLine(lines, section) == edited.lines.value(section)))
            return tr("%1 is written in a way that cannot be changed here: use a text editor")
                .arg(m_serialFile);
    }
    return {};
}

UnitFiles::Values UnitFiles::valuesIn(const QString& file)
{
    const QSettings settings(file, QSettings::IniFormat);
    Values values;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys)
        values.insert(key, settings.value(key));
    return values;
}

UnitFiles::Values UnitFiles::expectedDevices(const UnitConfig& edited) const
{
    Values expected;
    const Values before = valuesIn(m_devFile);
    for (auto value = before.cbegin(); value != before.cend(); ++value) {
        const QString group = value.key().section(QLatin1Char('/'), 0, -2);
        const QString storedName = unitOfGroup(group);
        if (!find(m_stored.units, &UnitEntry::storedName, storedName)) {
            expected.insert(value.key(), *value);
        } else if (const UnitEntry* unit = find(edited.units, &UnitEntry::storedName, storedName)) {
            expected.insert(QString(unit->name + value.key().mid(storedName.size())), *value);
        }
    }
    for (const UnitEntry& unit : edited.units) {
        const auto rows = changedKeys(unit, m_stored.units);
        for (const UnitKey* row : rows)
            expected.insert(QString(unit.name + QLatin1Char('/') + QLatin1String(row->key)), unit.*row->text);
    }
    return expected;
}
