#pragma once

#include <QFile>
#include <QStringList>
#include <QtTest>

#include <mutex>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

/// The far end of a serial line: a pseudo-terminal behind the name "line" in the current directory.
class TestLine
{
public:
    TestLine()
    {
        int slave = -1;
        char path[64] = {};
        if (openpty(&m_master, &slave, path, nullptr, nullptr) != 0)
            qFatal("openpty failed");
        ::close(slave);
        QFile::link(QString::fromLatin1(path), name());
    }
    ~TestLine()
    {
        QFile::remove(name());
        ::close(m_master);
    }
    Q_DISABLE_COPY(TestLine)

    static QString name() { return QStringLiteral("line"); }

    /// The attributes of the near end, which a pseudo-terminal shows at both.
    termios attributes() const
    {
        termios result = {};
        tcgetattr(m_master, &result);
        return result;
    }
    speed_t speed() const
    {
        const termios now = attributes();
        return cfgetospeed(&now);
    }
    bool send(const QByteArray& bytes) const
    {
        return ::write(m_master, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    }
    /// count bytes, or what has come when nothing more does for a second.
    QByteArray receive(int count) const
    {
        QByteArray bytes;
        pollfd line = {m_master, POLLIN, 0};
        char buffer[4096];
        while (bytes.size() < count && ::poll(&line, 1, 1000) > 0) {
            const ssize_t got = ::read(m_master, buffer, sizeof buffer);
            if (got <= 0)
                break;
            bytes.append(buffer, static_cast<int>(got));
        }
        return bytes;
    }

private:
    int m_master = -1;
};

/// Collects what is logged, from any thread, while it lives.
class Messages
{
public:
    Messages() { s_before = qInstallMessageHandler(take); }
    ~Messages()
    {
        qInstallMessageHandler(s_before);
        taken();
    }
    Q_DISABLE_COPY(Messages)

    /// All so far, debug lines as "D: ...", others as "W: ...".
    QStringList taken()
    {
        const std::lock_guard<std::mutex> guard(s_mutex);
        return std::exchange(s_lines, {});
    }

private:
    static void take(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        const std::lock_guard<std::mutex> guard(s_mutex);
        if (qstrcmp(context.category, "default") == 0)
            s_lines << QString(QLatin1String(type == QtDebugMsg ? "D: " : "W: ") + text);
    }

    static inline QtMessageHandler s_before = nullptr;
    static inline std::mutex s_mutex;
    static inline QStringList s_lines;
};

inline void writeFile(const QString& name, const QByteArray& content)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

inline QByteArray readFile(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
