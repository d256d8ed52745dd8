#pragma once

#include "failure.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// Writes a file and the folders on the way to it.
inline void writeFile(const QString& name, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(name).path());
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        fail(QStringLiteral("cannot write %1: %2").arg(name, file.errorString()));
}

/// Where a host in folder reads its units from.
inline QString unitsFile(const QString& folder)
{
    return folder + QStringLiteral("/PVMX/drovaPanel/db/dev.ini");
}

/// A folder of its own as working directory, for links, settings and traffic logs.
class Workplace
{
public:
    Workplace()
    {
        if (!m_folder.isValid() || !QDir::setCurrent(m_folder.path()))
            fail(QStringLiteral("cannot make a folder: %1").arg(m_folder.errorString()));
    }
    ~Workplace() { QDir::setCurrent(QCoreApplication::applicationDirPath()); }
    Q_DISABLE_COPY(Workplace)

    QString path() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};
