#include "lineoutput.h"

#include <cerrno>

#include <poll.h>
#include <unistd.h>

void LineOutput::write(const QByteArray& line)
{
    QByteArray text = line;
    text += '\n';
    int done = 0;
    while (isOpen() && done < text.size()) {
        const ssize_t written =
            ::write(m_descriptor, text.constData() + done, static_cast<size_t>(text.size() - done));
        if (written >= 0) {
            done += static_cast<int>(written);
        } else if (errno == EAGAIN) {
            // Whoever shares the terminal or pipe may have made it non-blocking.
            pollfd wait{m_descriptor, POLLOUT, 0};
            ::poll(&wait, 1, -1);
        } else if (errno != EINTR) {
            m_error = errno;
        }
    }
}

bool LineOutput::isClosedByReader() const
{
    return m_error == EPIPE;
}

QString LineOutput::errorText() const
{
    return qt_error_string(m_error);
}
