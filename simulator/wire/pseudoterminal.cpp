#include "pseudoterminal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <system_error>
#include <termios.h>

namespace simulation {

namespace {

/// A lock on this byte of a slave tells that it is served under this link, and no other: the number that a
/// stale link names may meanwhile be another line's. Far behind anything a client would lock.
struct flock servedLock(const QByteArray& link)
{
    const QFileInfo file(QFile::decodeName(link));
    const QString path = file.dir().canonicalPath() + QLatin1Char('/') + file.fileName();
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0x40000000 + static_cast<off_t>(qHash(path) % 0x3fffffff);
    lock.l_len = 1;
    return lock;
}

/// Where a link points to; empty when it is no link.
QByteArray targetOf(const QByteArray& link)
{
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(link.constData(), target.data(), target.size());
    return length > 0 ? QByteArray(target.data(), static_cast<int>(length)) : QByteArray();
}

/// Whether a running program of this kind serves the terminal under this link.
bool isServed(const QByteArray& slaveName, const QByteArray& link)
{
    const FileDescriptor slave(::open(slaveName.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    struct flock lock = servedLock(link);
    return slave.isOpen() && ::fcntl(slave.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

QString systemReason()
{
    return QString::fromStdString(std::generic_category().message(errno));
}

} // namespace

std::unique_ptr<PseudoTerminal> PseudoTerminal::open(const QString& link, QString* error)
{
    std::unique_ptr<PseudoTerminal> terminal(new PseudoTerminal(QFile::encodeName(link)));
    if (!terminal->openTerminal()) {
        *error = QStringLiteral("cannot make a pseudo-terminal for %1: %2").arg(link, systemReason());
        return nullptr;
    }
    return terminal->makeLink(error) ? std::move(terminal) : nullptr;
}

PseudoTerminal::PseudoTerminal(const QByteArray& link)
    : m_link(link)
{}

PseudoTerminal::~PseudoTerminal()
{
    if (m_linked && targetOf(m_link) == m_slaveName)
        ::unlink(m_link.constData());
}

bool PseudoTerminal::openTerminal()
{
    m_master = FileDescriptor(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    std::array<char, 64> name{};
    if (!m_master.isOpen() || ::grantpt(m_master.get()) != 0 || ::unlockpt(m_master.get()) != 0 ||
        ::ptsname_r(m_master.get(), name.data(), name.size()) != 0)
        return false;
    m_slaveName = name.data();
    m_slave = FileDescriptor(::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    struct flock lock = servedLock(m_link);
    if (!m_slave.isOpen() || ::fcntl(m_slave.get(), F_OFD_SETLK, &lock) != 0)
        return false;
    keepRaw();
    // Without a notice a client may find bytes of a conversation before its own: no reason to give up.
    m_notice = FileDescriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (m_notice.isOpen())
        ::inotify_add_watch(m_notice.get(), name.data(), IN_OPEN | IN_CLOSE);
    return true;
}

bool PseudoTerminal::makeLink(QString* error)
{
    const QByteArray target = targetOf(m_link);
    const QString link = QFile::decodeName(m_link);
    if (target.startsWith("/dev/pts/")) {
        // A number given back by an earlier run is often the one that this terminal has got.
        if (target != m_slaveName && isServed(target, m_link)) {
            *error =
                QStringLiteral("the serial line %1 is in use by another ups-sim: stop that one or choose "
                               "another --serial path")
                    .arg(link);
            return false;
        }
        ::unlink(m_link.constData());
    }
    m_linked = ::symlink(m_slaveName.constData(), m_link.constData()) == 0;
    if (!m_linked && errno == EEXIST)
        *error =
            QStringLiteral("%1 exists and is no link of a simulated serial line: choose another --serial "
                           "path or remove it")
                .arg(link);
    else if (!m_linked)
        *error = QStringLiteral("cannot make the link %1: %2: choose a --serial path in a folder that exists "
                                "and can be written")
                     .arg(link, systemReason());
    return m_linked;
}

QString PseudoTerminal::link() const
{
    return QFile::decodeName(m_link);
}

void PseudoTerminal::handleClientNotice()
{
    alignas(inotify_event) std::array<char, 4096> events{};
    ssize_t length = 0;
    bool opened = false;
    while ((length = ::read(m_notice.get(), events.data(), events.size())) > 0) {
        for (ssize_t at = 0; at < length;) {
            inotify_event event{};
            std::memcpy(&event, events.data() + at, sizeof event);
            opened = opened || (event.mask & IN_OPEN) != 0;
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    if (opened)
        ::tcflush(m_slave.get(), TCIFLUSH);
    keepRaw();
}

void PseudoTerminal::keepRaw()
{
    termios settings{};
    if (::tcgetattr(m_slave.get(), &settings) != 0)
        return;
    termios raw = settings;
    ::cfmakeraw(&raw);
    const bool altered =
        raw.c_iflag != settings.c_iflag || raw.c_oflag != settings.c_oflag || raw.c_lflag != settings.c_lflag;
    if (!altered)
        return;
    // The character size and parity stay the client's own.
    raw.c_cflag = settings.c_cflag;
    ::tcsetattr(m_slave.get(), TCSANOW, &raw);
}

} // namespace simulation
