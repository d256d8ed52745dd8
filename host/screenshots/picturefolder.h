#pragma once

#include <QString>

class QPixmap;

/// The folder that pictures go to, numbered in the order in which they are taken.
class PictureFolder
{
public:
    /// Makes the folder unless it exists.
    explicit PictureFolder(const QString& path);

    /// Why no picture can be written, or the last one was not, in one line; else empty.
    QString error() const { return m_error; }
    /// Writes the next picture as "NN-name.png", over one of that name; returns its path, empty on an error.
    QString add(const QPixmap& picture, const QString& name);

private:
    QString m_path;
    QString m_error;
    int m_count = 0;
};
