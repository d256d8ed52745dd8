#include "picturefolder.h"

#include <QDir>
#include <QPixmap>
#include <QSaveFile>
#include <QTemporaryFile>

namespace {
constexpr int smallest = 0; // pictures lose nothing by it
} // namespace

PictureFolder::PictureFolder(const QString& path)
    : m_path(path)
{
    // The access bits do not tell of read-only or special file systems, nor of the superuser: try it.
    QTemporaryFile probe(QDir(path).filePath(QStringLiteral("picture")));
    if (!QDir().mkpath(path))
        m_error = QStringLiteral("%1: the folder cannot be made").arg(path);
    else if (!probe.open())
        m_error = QStringLiteral("%1: nothing can be written there: %2").arg(path, probe.errorString());
}

QString PictureFolder::add(const QPixmap& picture, const QString& name)
{
    const QString file =
        QDir(m_path).filePath(QStringLiteral("%1-%2.png").arg(++m_count, 2, 10, QLatin1Char('0')).arg(name));
    QSaveFile output(file);
    if (output.open(QIODevice::WriteOnly) && picture.save(&output, "PNG", smallest) && output.commit())
        return file;
    m_error = QStringLiteral("%1: not written: %2").arg(file, output.errorString());
    return {};
}
