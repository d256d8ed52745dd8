#include "lineoutput.h"

#include <cerrno>
#include <climits>

#include <poll.h>
#include <unistd.h>

namespace {
constexpr int sliceMs = 50;
} // namespace

void LineOutput::write(const QByteArray& line)
{
    QByteArray text = line;
    text += '\n';
    int done = 0;
    while (isOpen() && done < text.size() && waitForReader()) {
        // As much as a pipe that is ready takes for certain: a write must not block, or no signal and no time
        // limit could end the program.
        const int length = qMin(text.size() - done, PIPE_BUF);
        const ssize_t written = ::write(m_descriptor, text.constData() + done, static_cast<size_t>(length));
        if (written >= 0)
            done += static_cast<int>(written);
        else if (errno != EAGAIN && errno != EINTR)
            m_error = errno;
    }
}

bool LineOutput::waitForReader()
{
    pollfd output{m_descriptor, POLLOUT, 0};
    while (::poll(&output, 1, sliceMs) == 0) {
        if (m_giveUp()) {
            m_error = EPIPE; // a reader that does not read is as good as gone
            return false;
        }
    }
    return true;
}

bool LineOutput::isClosedByReader() const
{
    return m_error == EPIPE;
}

QString LineOutput::errorText() const
{
    return qt_error_string(m_error);
}
