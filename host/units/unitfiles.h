#pragma once

#include "unitentry.h"

#include <QCoreApplication>
#include <QVariant>

/// "dev.ini" and "serial.ini" as one configuration, read as the plugin and the port manager read them. GUI
/// thread or any other: small files, no device.
class UnitFiles
{
    Q_DECLARE_TR_FUNCTIONS(UnitFiles)

public:
    UnitFiles(const QString& devIniFile, const QString& serialIniFile);

    /// Ends a save() that a crash interrupted: whoever reads the files calls it first. Does nothing while
    /// another program saves them.
    static void recover(const QString& devIniFile, const QString& serialIniFile);

    /// Reads the files; missing ones are empty. Values that make no sense are there to be corrected. Returns
    /// why the files cannot be edited, in one line: unreadable, or no INI file.
    QString load();
    /// What load() found. Lines of every section, also of ports that no unit uses.
    const UnitConfig& stored() const { return m_stored; }

    /// Writes what differs, both files or neither. Returns in one line why nothing was changed: a file cannot
    /// be written, another program changed it, or the host would not take the result.
    QString save(const UnitConfig& edited);

private:
    using Values = QMap<QString, QVariant>;

    QByteArray editedDevices(const UnitConfig& edited) const;
    QByteArray editedLines(const UnitConfig& edited) const;
    QString checkCandidates(const UnitConfig& edited, const QString& devFile,
                            const QString& serialFile) const;
    Values expectedDevices(const UnitConfig& edited) const;
    static Values valuesIn(const QString& file);

    QString m_devFile;
    QString m_serialFile;
    QByteArray m_devText; ///< as load() found it
    QByteArray m_serialText;
    UnitConfig m_stored;
};
