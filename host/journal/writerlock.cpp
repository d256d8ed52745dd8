#include "writerlock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

WriterLock::~WriterLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

WriterLock::Result WriterLock::take(const QString& journalFile)
{
    if (m_descriptor >= 0)
        return Result::Taken;
    const QByteArray name = QFile::encodeName(journalFile + QStringLiteral(".lock"));
    const int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0)
        return Result::NotMade;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        return Result::InUse;
    }
    m_descriptor = descriptor;
    return Result::Taken;
}
