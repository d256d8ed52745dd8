#pragma once

#include "filedescriptor.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace simulation {

/// A pseudo-terminal that plays a serial port: clients open `link`, which points to its slave side, as often
/// as they like; the far end of the line is line(). The slave is also held open here, so that the line never
/// hangs up.
class PseudoTerminal
{
public:
    /// Makes the terminal and the link. A link that an earlier run left behind is replaced; anything else of
    /// that name, and the link of a program that still runs, is left alone. Null on failure, with one line in
    /// `error` that names the link and what to do.
    static std::unique_ptr<PseudoTerminal> open(const QString& link, QString* error);
    /// Removes the link unless something else has taken its place.
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    QString link() const;
    /// The line's far end; non-blocking.
    int line() const { return m_master.get(); }
    /// Readable when a client has opened or closed the port; -1 where the system has no such notice left.
    int clientNotice() const { return m_notice.get(); }
    /// To be called when clientNotice() is readable: what came in while nobody listened is lost to the next
    /// client, as on a real port.
    void handleClientNotice();
    /// Undoes line editing that a client may have switched on: a line alters no bytes.
    void keepRaw();

private:
    explicit PseudoTerminal(const QByteArray& link);
    bool openTerminal();
    bool makeLink(QString* error);

    const QByteArray m_link;
    QByteArray m_slaveName;
    FileDescriptor m_master;
    FileDescriptor m_slave;
    FileDescriptor m_notice;
    bool m_linked = false;
};

} // namespace simulation
