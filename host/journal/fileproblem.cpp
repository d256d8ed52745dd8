#include "fileproblem.h"

#include <QFileInfo>
#include <QSqlError>
#include <QStorageInfo>

#include <cerrno>

namespace {

// Primary result codes of SQLite, which the driver hands on as numbers.
enum ResultCode
{
    Busy = 5,
    Locked = 6,
    ReadOnly = 8,
    InputOutput = 10,
    Corrupt = 11,
    Full = 13,
    CannotOpen = 14,
    NotADatabase = 26
};

constexpr int primaryCodeMask = 0xff; // the upper bits tell details
constexpr qint64 fullBelowBytes = 128LL * 1024;

const auto diskIsFull = QLatin1String("the disk is full: free some space");

QString whyNotOpened(const QString& file)
{
    const QFileInfo info(file);
    const QFileInfo folder(info.absolutePath());
    if (info.isDir())
        return QStringLiteral("it is a folder: name a file");
    if (!folder.isDir())
        return QStringLiteral("there is no folder %1: create it").arg(folder.filePath());
    if (!folder.isWritable())
        return QStringLiteral("the folder %1 cannot be written: check its permissions")
            .arg(folder.filePath());
    return QStringLiteral("it cannot be opened: check the permissions of the file and its folder");
}

QString inputOutputText(const QString& file, const QString& detail)
{
    // The small files beside the database fail this way on a full disk.
    const QStorageInfo disk(QFileInfo(file).absolutePath());
    if (disk.isValid() && disk.bytesAvailable() < fullBelowBytes)
        return diskIsFull;
    return QStringLiteral("reading or writing failed (%1): check the disk").arg(detail);
}

} // namespace

FileProblem fileproblem::from(const QSqlError& error, const QString& file)
{
    const QString detail = error.databaseText().simplified();
    switch (error.nativeErrorCode().toInt() & primaryCodeMask) {
    case Busy:
    case Locked:
        return {FileProblem::Kind::Passing, QStringLiteral("it is locked by another program: end that")};
    case ReadOnly:
        return {FileProblem::Kind::Passing,
                QStringLiteral("it cannot be written: check its owner and permissions")};
    case InputOutput:
        return {FileProblem::Kind::Passing, inputOutputText(file, detail)};
    case Full:
        return {FileProblem::Kind::Passing, diskIsFull};
    case CannotOpen:
        return {FileProblem::Kind::Passing, whyNotOpened(file)};
    case Corrupt:
    case NotADatabase:
        return {FileProblem::Kind::Damaged, detail};
    default:
        return {FileProblem::Kind::Passing, detail.isEmpty() ? error.driverText().simplified() : detail};
    }
}

FileProblem fileproblem::fromSystem(int errorNumber, const QString& file)
{
    return {FileProblem::Kind::Passing, errorNumber == ENOSPC ? QString(diskIsFull) : whyNotOpened(file)};
}
