#pragma once

#include "text.h"

#include <QFile>
#include <QtTest>

#include <csignal>

#include <sys/resource.h>

inline QByteArray contentOf(const Text& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// Replaces the file.
inline void writeFile(const Text& name, const QByteArray& content)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

/// A process that may not make files any larger meets the same errors as one whose disk is full.
inline void limitFileSize(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = qMin(bytes, limit.rlim_max);
    ::setrlimit(RLIMIT_FSIZE, &limit);
}
