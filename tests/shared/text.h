#pragma once

#include <QStringBuilder>
#include <QStringList>

/// A text handed to a helper of the tests: a plain literal will do.
struct Text : QString
{
    Text() = default;
    Text(const char* text)
        : QString(QString::fromUtf8(text))
    {}
    template <typename Other>
    Text(const Other& text)
        : QString(text)
    {}
};

template <>
struct QConcatenable<Text> : QConcatenable<QString>
{};

/// Its words; none of an empty text.
inline QStringList words(const Text& text)
{
    return text.isEmpty() ? QStringList() : text.trimmed().split(QLatin1Char(' '));
}
