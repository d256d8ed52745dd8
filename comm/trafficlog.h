#pragma once

#include <QByteArray>
#include <QString>

#include <ctime>

// The traffic log of a serial port: one line per transfer, on the path of every exchange, so kept cheap.

namespace trafficlog {
/// A log larger than this is moved to its backup.
constexpr qint64 LargestLogBytes = 0x500000;

/// The name of the log of a port: "log_" and the last part of its device path, after prefix.
QString fileName(const QString& prefix, const QString& portName);

/// One line: local time to the millisecond, "recv: " for a non-zero direction or "send: ", the bytes as two
/// hexadecimal digits and a blank each, a line feed.
QByteArray line(const timespec& now, int direction, const char* bytes, qint64 count);

/// Appends a line to the log, then copies a log that has become too large to fileName + ".bak.log" and
/// removes it. A backup that is there already is not replaced and the log is removed all the same:
/// deliberate, the disk use stays bounded and the first trouble is kept.
void append(const QString& fileName, const QByteArray& line);
} // namespace trafficlog
