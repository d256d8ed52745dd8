#pragma once

#include "text.h"

#include <QTemporaryDir>
#include <QtTest>

#include <poll.h>
#include <pty.h>
#include <unistd.h>

/// The far end of a serial line: a pseudo-terminal behind the name "line" in a directory of its own, which is
/// the current one. vanish() and comeBack() pull the device and plug it in again.
class TestLine
{
public:
    TestLine()
    {
        QDir::setCurrent(m_dir.path());
        comeBack();
    }
    ~TestLine() { vanish(); }
    Q_DISABLE_COPY(TestLine)

    void vanish()
    {
        QFile::remove(QStringLiteral("line"));
        ::close(m_master);
    }
    void comeBack()
    {
        int slave = -1;
        char path[64] = {};
        if (openpty(&m_master, &slave, path, nullptr, nullptr) != 0)
            qFatal("openpty failed");
        ::close(slave);
        QFile::link(QString::fromLatin1(path), QStringLiteral("line"));
    }
    /// The attributes of the near end, which a pseudo-terminal shows at both.
    termios attributes() const
    {
        termios result = {};
        tcgetattr(m_master, &result);
        return result;
    }
    int vtime() const { return attributes().c_cc[VTIME]; }
    speed_t speed() const
    {
        const termios now = attributes();
        return cfgetospeed(&now);
    }
    bool send(const QByteArray& bytes) const
    {
        return ::write(m_master, bytes, size_t(bytes.size())) == bytes.size();
    }
    /// What comes until nothing more does for 200 ms.
    QByteArray receive() const
    {
        QByteArray bytes;
        pollfd line = {m_master, POLLIN, 0};
        for (char byte = 0; ::poll(&line, 1, 200) > 0 && ::read(m_master, &byte, 1) == 1;)
            bytes.append(byte);
        return bytes;
    }

private:
    QTemporaryDir m_dir;
    int m_master = -1;
};

/// The test fails unless a message that begins so comes.
inline void expect(QtMsgType type, const Text& beginning)
{
    const QString pattern = QLatin1Char('^') + QRegularExpression::escape(beginning);
    QTest::ignoreMessage(type, QRegularExpression(pattern));
}
