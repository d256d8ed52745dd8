#include "portusers.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

const QString processes = QStringLiteral("/proc/");

QStringList openFilesOf(const QString& process)
{
    const QDir descriptors(processes + process + QStringLiteral("/fd"));
    QStringList files;
    for (const QString& name : descriptors.entryList(QDir::Files | QDir::System))
        files += QFile::symLinkTarget(descriptors.filePath(name));
    return files;
}

QString nameOf(const QString& process)
{
    QFile file(processes + process + QStringLiteral("/comm"));
    return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll().trimmed()) : QString();
}

} // namespace

QStringList otherUsersOf(const QString& device)
{
    // A program that makes a pseudo-terminal holds both ends of it: that is the unit, not one who asks it.
    const QString maker = QStringLiteral("/dev/ptmx");
    const QString file = QFileInfo(device).canonicalFilePath();
    const QString self = QString::number(QCoreApplication::applicationPid());
    QStringList users;
    for (const QString& process : QDir(processes).entryList({QStringLiteral("[1-9]*")}, QDir::Dirs)) {
        const QStringList files = process == self ? QStringList() : openFilesOf(process);
        if (!file.isEmpty() && files.contains(file) && !files.contains(maker))
            users += QStringLiteral("%1 (%2)").arg(nameOf(process), process);
    }
    return users;
}
