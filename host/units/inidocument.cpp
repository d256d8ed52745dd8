#include "inidocument.h"

#include <QLatin1String>

#include <algorithm>

namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

QByteArray hexOf(ushort code, int digits)
{
    return QByteArray::number(code, 16).toUpper().rightJustified(digits, '0');
}

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// A name without its escapes. QSettings takes bytes outside ASCII for Latin-1 here, whatever the file is in.
QString decodeName(const QByteArray& raw)
{
    QString name;
    for (int i = 0; i < raw.size(); ++i) {
        const bool isLong = raw.mid(i + 1, 1) == "U";
        const int first = i + (isLong ? 2 : 1);
        const int digits = isLong ? 4 : 2;
        bool isNumber = false;
        const int code = raw.at(i) == '%' && first + digits <= raw.size()
                             ? raw.mid(first, digits).toInt(&isNumber, 16)
                             : 0;
        if (isNumber) {
            name += QChar(code);
            i = first + digits - 1;
        } else {
            name += raw.at(i) == '\\' ? QLatin1Char('/') : QLatin1Char(raw.at(i));
        }
    }
    return name;
}

QString joined(const QString& section, const QString& key)
{
    return section.isEmpty() ? key : QString(section + QLatin1Char('/') + key);
}

} // namespace

QByteArray IniDocument::encodeName(const QString& name)
{
    // Plain [General] means "no section".
    if (name.compare(QLatin1String("General"), Qt::CaseInsensitive) == 0)
        return '%' + name.toLatin1();
    static const QByteArray special = "%\\;\"[]";
    QByteArray result;
    for (int i = 0; i < name.size(); ++i) {
        const ushort code = name.at(i).unicode();
        const bool isOuterSpace = code == ' ' && (i == 0 || i == name.size() - 1);
        if (code >= ' ' && code < 0x7f && !special.contains(char(code)) && !isOuterSpace)
            result += char(code);
        else
            result += code > 0xff ? QByteArray("%U" + hexOf(code, 4)) : QByteArray('%' + hexOf(code, 2));
    }
    return result;
}

QByteArray IniDocument::encodeValue(const QString& value)
{
    QByteArray result;
    bool isPlain = true;
    bool isAfterHex = false; // a hex escape has no end of its own: a digit behind it would join it
    // One "@" at the beginning announces a type to QSettings, two stand for one.
    const QString text = value.startsWith(QLatin1Char('@')) ? QString(QLatin1Char('@') + value) : value;
    for (const QChar character : text) {
        const ushort code = character.unicode();
        const char c = code < 0x7f ? char(code) : '\0';
        if (code < ' ' || code >= 0x7f || (isAfterHex && isHexDigit(c))) {
            result += "\\x" + QByteArray::number(code, 16);
            isAfterHex = true;
            continue;
        }
        isAfterHex = false;
        isPlain = isPlain && (isHexDigit(c) || (c >= 'G' && c <= 'Z') || (c >= 'g' && c <= 'z') ||
                              QByteArray("/._:-+#@").contains(c));
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return isPlain ? result : QByteArray('"' + result + '"');
}

QStringList IniDocument::groups() const
{
    QStringList result;
    const QVector<Line> all = lines();
    for (const Line& line : all) {
        if (line.isHeader)
            result += line.section;
        else if (line.equals >= 0)
            result += fullKeyOf(line).section(QLatin1Char('/'), 0, -2);
    }
    result.removeDuplicates();
    return result;
}

int IniDocument::firstBadLine() const
{
    const QVector<Line> all = lines();
    for (const Line& line : all) {
        const bool isWhole = line.isHeader ? nameEnd(line) < line.end : line.equals >= 0;
        if (!isWhole || !line.isClosed)
            return m_text.left(line.start).count('\n') + 1;
    }
    return 0;
}

void IniDocument::setValue(const QString& section, const QString& key, const QString& value)
{
    const QVector<Line> all = lines();
    const QString fullKey = joined(section, key);
    const auto isWanted = [&](const Line& line) { return fullKeyOf(line) == fullKey; };
    const auto found = std::find_if(all.crbegin(), all.crend(), isWanted);
    if (found != all.crend()) {
        int start = found->equals + 1;
        int end = found->end;
        while (start < end && isSpace(m_text.at(start)))
            ++start;
        while (end > start && isSpace(m_text.at(end - 1)))
            --end;
        m_text.replace(start, end - start, encodeValue(value));
        return;
    }
    const QByteArray entry = key.toLatin1() + '=' + encodeValue(value);
    const auto isInside = [&](const Line& line) { return line.section == section; };
    const auto last = std::find_if(all.crbegin(), all.crend(), isInside);
    if (last != all.crend()) {
        insertKey(*last, entry);
        return;
    }
    if (!m_text.isEmpty() && !isLineEnd(m_text.at(m_text.size() - 1)))
        m_text += lineEnd();
    if (!m_text.isEmpty())
        m_text += lineEnd();
    m_text += '[' + encodeName(section) + ']' + lineEnd() + entry + lineEnd();
}

void IniDocument::removeSection(const QString& section)
{
    const QVector<Line> all = lines();
    for (int last = all.size() - 1; last >= 0; --last) {
        int first = last;
        while (first > 0 && !all.at(first).isHeader)
            --first;
        if (all.at(first).isHeader && all.at(first).section == section) {
            int end = physicalEnd(all.at(last));
            const int blankEnd =
                int(std::find_if_not(m_text.cbegin() + end, m_text.cend(), isSpace) - m_text.cbegin());
            // The empty lines that set it apart go with it, an indent of what follows does not.
            while (end < blankEnd && m_text.mid(end, blankEnd - end).contains('\n'))
                ++end;
            int start = all.at(first).start;
            while (start > 0 && !isLineEnd(m_text.at(start - 1)))
                --start;
            m_text.remove(start, end - start);
        }
        last = first;
    }
}

void IniDocument::renameSection(const QString& section, const QString& newName)
{
    const QVector<Line> all = lines();
    for (auto line = all.crbegin(); line != all.crend(); ++line) {
        if (line->isHeader && line->section == section)
            m_text.replace(line->start + 1, nameEnd(*line) - line->start - 1, encodeName(newName));
    }
}

QVector<IniDocument::Line> IniDocument::lines() const
{
    QVector<Line> result;
    QString section;
    // Only a mark at the very beginning, which QSettings passes over.
    Line line = nextLine(m_text.startsWith("\xef\xbb\xbf") ? 3 : 0);
    while (line.start < line.end) {
        line.isHeader = m_text.at(line.start) == '[';
        if (line.isHeader)
            section = sectionOf(line);
        line.section = section;
        result += line;
        line = nextLine(line.end);
    }
    return result;
}

IniDocument::Line IniDocument::nextLine(int position) const
{
    Line line;
    const int size = m_text.size();
    const auto skip = [&](auto isSkipped) {
        while (position < size && isSkipped(m_text.at(position)))
            ++position;
    };
    skip(isSpace);
    while (position < size && m_text.at(position) == ';') {
        skip([](char c) { return !isLineEnd(c); });
        skip(isSpace);
    }
    line.start = position;
    bool isQuoted = false;
    bool isCutOff = false; // by a backslash that would take in what is added behind it
    for (; position < size; ++position) {
        const char c = m_text.at(position);
        if (!isQuoted && (isLineEnd(c) || c == ';'))
            break;
        if (c == '"')
            isQuoted = !isQuoted;
        else if (c == '=' && !isQuoted && line.equals < 0)
            line.equals = position;
        else if (c == '\\') {
            ++position; // the character behind it counts for nothing, be it an end of line
            const QByteArray pair = m_text.mid(position, 2);
            if (pair == "\r\n" || pair == "\n\r")
                ++position;
            isCutOff = position >= size || (position + 1 == size && isLineEnd(m_text.at(position)));
        }
    }
    line.end = qMin(position, size);
    line.isClosed = !isQuoted && !isCutOff;
    return line;
}

int IniDocument::nameEnd(const Line& header) const
{
    const int close = m_text.indexOf(']', header.start);
    return close < 0 || close >= header.end ? header.end : close;
}

QString IniDocument::sectionOf(const Line& header) const
{
    const QByteArray raw = m_text.mid(header.start + 1, nameEnd(header) - header.start - 1).trimmed();
    const QByteArray lower = raw.toLower();
    if (lower == "general")
        return {};
    return lower == "%general" ? QString::fromLatin1(raw.mid(1)) : decodeName(raw);
}

QString IniDocument::fullKeyOf(const Line& line) const
{
    if (line.isHeader || line.equals < 0)
        return {};
    return joined(line.section, decodeName(m_text.mid(line.start, line.equals - line.start).trimmed()));
}

// Behind the end of line, and the comment before it.
int IniDocument::physicalEnd(const Line& line) const
{
    int end = line.end;
    while (end < m_text.size() && !isLineEnd(m_text.at(end)))
        ++end;
    if (m_text.mid(end, 2) == "\r\n")
        return end + 2;
    return qMin(end + 1, m_text.size());
}

void IniDocument::insertKey(const Line& after, const QByteArray& text)
{
    const int position = physicalEnd(after);
    const bool isEnded = position > 0 && isLineEnd(m_text.at(position - 1));
    m_text.insert(position, (isEnded ? QByteArray() : lineEnd()) + text + lineEnd());
}

QByteArray IniDocument::lineEnd() const
{
    return m_text.contains("\r\n") ? "\r\n" : "\n";
}
