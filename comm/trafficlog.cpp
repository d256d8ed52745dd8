#include "trafficlog.h"

#include <QDebug>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr char digits[] = "0123456789abcdef";

// Writes value with width decimal digits and the character after; returns the place behind it.
char* putNumber(char* out, int value, int width, char after)
{
    for (int i = width - 1; i >= 0; --i) {
        out[i] = digits[value % 10];
        value /= 10;
    }
    out[width] = after;
    return out + width + 1;
}

char* putTime(char* out, const timespec& now)
{
    tm local = {};
    localtime_r(&now.tv_sec, &local);
    out = putNumber(out, local.tm_year + 1900, 4, '-');
    out = putNumber(out, local.tm_mon + 1, 2, '-');
    out = putNumber(out, local.tm_mday, 2, ' ');
    out = putNumber(out, local.tm_hour, 2, ':');
    out = putNumber(out, local.tm_min, 2, ':');
    out = putNumber(out, local.tm_sec, 2, '.');
    return putNumber(out, static_cast<int>(now.tv_nsec / 1000000), 3, ' ');
}

void moveToBackup(const QString& fileName)
{
    QFile log(fileName);
    if (!log.copy(QString(fileName + QLatin1String(".bak.log"))))
        qDebug("%s", qUtf8Printable(log.errorString()));
    log.remove();
}
} // namespace

QString trafficlog::fileName(const QString& prefix, const QString& portName)
{
    return prefix + QLatin1String("log_") + portName.section(QLatin1Char('/'), -1) + QLatin1String(".log");
}

QByteArray trafficlog::line(const timespec& now, int direction, const char* bytes, qint64 count)
{
    constexpr int timeChars = sizeof "yyyy-MM-dd HH:mm:ss.zzz " - 1;
    constexpr int directionChars = 6;
    QByteArray text(timeChars + directionChars + 3 * static_cast<int>(count) + 1, Qt::Uninitialized);
    char* out = putTime(text.data(), now);
    memcpy(out, direction ? "recv: " : "send: ", directionChars);
    out += directionChars;
    for (qint64 i = 0; i < count; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        *out++ = digits[byte >> 4];
        *out++ = digits[byte & 0x0F];
        *out++ = ' ';
    }
    *out = '\n';
    return text;
}

void trafficlog::append(const QString& fileName, const QByteArray& line)
{
    const QByteArray path = QFile::encodeName(fileName);
    const int file = ::open(path.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (file >= 0) {
        // In one piece, so that lines stay whole when two ports share a log. A full disk must not stop a
        // query.
        const ssize_t written = ::write(file, line.constData(), static_cast<std::size_t>(line.size()));
        Q_UNUSED(written)
        ::close(file);
    }
    struct stat status = {};
    if (::stat(path.constData(), &status) == 0 && status.st_size > LargestLogBytes)
        moveToBackup(fileName);
}
