#pragma once

#include <QByteArray>
#include <QMutex>
#include <QTranslator>

#include <set>
#include <tuple>

/// A text that code wants to have translated.
struct AskedText
{
    QByteArray context;
    QByteArray source;
    QByteArray comment;

    bool operator<(const AskedText& other) const
    {
        return std::tie(context, source, comment) < std::tie(other.context, other.source, other.comment);
    }
};

/// A translator that knows no language and notes what it is asked for. Any thread.
class AskedTexts : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char* disambiguation = nullptr,
                      int n = -1) const override;
    std::set<AskedText> texts() const;

private:
    mutable QMutex m_lock;
    mutable std::set<AskedText> m_texts;
};
