#include "pairedfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace {

QString targetOf(const QString& file)
{
    const QFileInfo info(file);
    return info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
}

QString newName(const QString& target)
{
    return target + QStringLiteral(".new");
}

QString readyName(const QString& target)
{
    return target + QStringLiteral(".ready");
}

// Unlike QFile::rename it replaces, in one step.
bool replace(const QString& from, const QString& to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

// QFile has no reason to tell when a disk fills up half-way.
bool writeWhole(int descriptor, const QByteArray& text)
{
    int done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(descriptor, text.constData() + done, size_t(text.size() - done));
        if (written < 0 && errno != EINTR)
            return false;
        done += int(qMax(written, ssize_t(0)));
    }
    return ::fsync(descriptor) == 0;
}

// Names reach the disk apart from the files; their order has to hold after a power cut as well.
void syncFolderOf(const QString& target)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(target).absolutePath());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

} // namespace

PairedFiles::PairedFiles(const FileChange& first, const FileChange& second)
    : m_slots{{{first, targetOf(first.file), first.before != first.after},
               {second, targetOf(second.file), second.before != second.after}}}
{}

PairedFiles::~PairedFiles()
{
    for (const Slot& slot : m_slots) {
        if (slot.isChanged)
            QFile::remove(newName(slot.target));
    }
}

QString PairedFiles::candidate(int index) const
{
    const Slot& slot = m_slots.at(static_cast<size_t>(index));
    return slot.isChanged ? newName(slot.target) : slot.change.file;
}

bool PairedFiles::prepare()
{
    return std::all_of(m_slots.cbegin(), m_slots.cend(), [this](const Slot& slot) {
        return !slot.isChanged || writeNew(slot, slot.change.after);
    });
}

bool PairedFiles::writeNew(const Slot& slot, const QByteArray& text)
{
    const QFileInfo info(slot.target);
    const auto fail = [&](const QString& reason) {
        m_error = tr("%1 cannot be written: %2").arg(slot.change.file, reason);
        return false;
    };
    // A new file could take the place of one that is meant to stay as it is.
    if (info.exists() && !info.isWritable())
        return fail(tr("it is read-only"));
    if (!QDir().mkpath(info.absolutePath()))
        return fail(tr("its folder cannot be made"));
    QFile file(newName(slot.target));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return fail(file.errorString());
    if (info.exists())
        file.setPermissions(info.permissions());
    if (!writeWhole(file.handle(), text))
        return fail(qt_error_string(errno));
    syncFolderOf(slot.target);
    return true;
}

bool PairedFiles::commit()
{
    const Slot& first = m_slots[0];
    const Slot& second = m_slots[1];
    const QString ready = readyName(second.target);
    const bool isPair = first.isChanged && second.isChanged;
    if (isPair && !rename(newName(second.target), {second.change, ready, true}))
        return false;
    if (first.isChanged && !rename(newName(first.target), first)) {
        QFile::remove(ready);
        return false;
    }
    if (!second.isChanged || rename(isPair ? ready : newName(second.target), second))
        return true;
    if (isPair)
        restoreFirst();
    QFile::remove(ready);
    return false;
}

bool PairedFiles::rename(const QString& from, const Slot& to)
{
    if (!replace(from, to.target)) {
        m_error = tr("%1 cannot be replaced: %2").arg(to.change.file, qt_error_string(errno));
        return false;
    }
    syncFolderOf(to.target);
    return true;
}

void PairedFiles::restoreFirst()
{
    const QString error = m_error;
    const Slot& first = m_slots[0];
    if (first.change.before.isEmpty())
        QFile::remove(first.target);
    else if (writeNew(first, first.change.before))
        rename(newName(first.target), first);
    m_error = error;
}

void PairedFiles::recover(const QString& first, const QString& second)
{
    const QString firstNew = newName(targetOf(first));
    const QString secondTarget = targetOf(second);
    const QString ready = readyName(secondTarget);
    if (QFile::exists(ready)) {
        if (QFile::exists(firstNew))
            QFile::remove(ready);
        else if (replace(ready, secondTarget))
            syncFolderOf(secondTarget);
    }
    // Last, for they tell how far it came.
    QFile::remove(newName(secondTarget));
    QFile::remove(firstNew);
}
