#pragma once

#include <QByteArray>
#include <QStringList>
#include <QVector>

/// The text of an INI file, changed where asked and nowhere else: comments, order, unknown keys, spaces and
/// line ends stay byte for byte. What is written reads back the same through QSettings, which itself would
/// write the whole file anew, sorted and without a comment.
class IniDocument
{
public:
    explicit IniDocument(const QByteArray& text = {})
        : m_text(text)
    {}

    QByteArray text() const { return m_text; }

    /// The groups that keys and sections belong to ("A" for the key "A/addr"), in order, each once.
    QStringList groups() const;
    /// Where QSettings would lose its way: the number, from 1, of the first line that is neither section nor
    /// key=value, or has no end: a quote that is never closed, a backslash at the end. 0 when there is none.
    int firstBadLine() const;

    /// Gives a key of a section its value; both are made at the end of what is there if need be. Where a key
    /// stands twice, the last one counts and is the one that is changed. Section is a name as QSettings tells
    /// it, key a plain word.
    void setValue(const QString& section, const QString& key, const QString& value);
    /// Takes a section away, from its name to its last key. Comments that follow stay: they may be about what
    /// comes next.
    void removeSection(const QString& section);
    void renameSection(const QString& section, const QString& newName);

    /// A section's name, escaped where QSettings would read it as something else.
    static QByteArray encodeName(const QString& name);
    /// A value, escaped and in quotes where QSettings would read it as something else.
    static QByteArray encodeValue(const QString& value);

private:
    /// A line as QSettings sees it: quotes and backslashes make it go on past an end of line.
    struct Line
    {
        bool isHeader = false;
        bool isClosed = true; ///< no quote is left open, nor a backslash at the end of the text
        int start = 0;        ///< its first character, behind spaces and comments
        int end = 0;          ///< behind its last character, before a comment or an end of line
        int equals = -1;      ///< of a key; -1 in a line without one
        QString section;      ///< that it opens or stands in
    };

    QVector<Line> lines() const; // those without a meaning included
    Line nextLine(int position) const;
    int nameEnd(const Line& header) const;
    QString sectionOf(const Line& header) const;
    QString fullKeyOf(const Line& line) const;
    int physicalEnd(const Line& line) const;
    void insertKey(const Line& after, const QByteArray& text);
    QByteArray lineEnd() const;

    QByteArray m_text;
};
