#include "template.h"

#include <QFile>
#include <QMap>
#include <QProcess>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace {

// The elements of a .ts file that hold nothing but a text.
const auto contextTag = QStringLiteral("name");
const auto sourceTag = QStringLiteral("source");
const auto commentTag = QStringLiteral("comment");
const auto translationTag = QStringLiteral("translation");
const QStringList textTags{contextTag, sourceTag, commentTag, translationTag};

} // namespace

QString texttemplate::pseudo(QString text)
{
    constexpr ushort fullWidth = 0xFEE0; // from a letter to its full-width form
    for (QChar& letter : text) {
        const ushort code = letter.unicode();
        if ((code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z'))
            letter = QChar(static_cast<ushort>(code + fullWidth));
    }
    return text;
}

std::set<AskedText> texttemplate::translate(const QString& tsFile, const QString& targetFile)
{
    QFile source(tsFile);
    QFile target(targetFile);
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly))
        return {};
    QXmlStreamReader reader(&source);
    QXmlStreamWriter writer(&target);
    std::set<AskedText> texts;
    QMap<QString, QString> latest; // the text of each tag
    while (!reader.atEnd()) {
        reader.readNext();
        const QString tag = reader.name().toString();
        if (reader.isStartElement() && textTags.contains(tag)) {
            latest[tag] = reader.readElementText();
            writer.writeTextElement(tag, tag == translationTag ? pseudo(latest[sourceTag]) : latest[tag]);
            continue;
        }
        if (reader.isEndElement() && tag == QLatin1String("message"))
            texts.insert(
                {latest[contextTag].toUtf8(), latest[sourceTag].toUtf8(), latest.take(commentTag).toUtf8()});
        writer.writeCurrentToken(reader);
    }
    return reader.hasError() ? std::set<AskedText>() : texts;
}

QString texttemplate::run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished())
        return QStringLiteral("%1: %2 (lupdate and lrelease are in qttools5-dev-tools)")
            .arg(program, process.errorString());
    const bool isGood = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return isGood ? QString() : QString::fromUtf8(process.readAll());
}
