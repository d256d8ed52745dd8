#include "translation.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QRegularExpression>

namespace {

QString unusable(const QString& language, const QString& problem)
{
    return QStringLiteral(
               "--language %1: %2: make the file with scripts/texts.sh, linguist and lrelease, see "
               "docs/translation.md")
        .arg(language, problem);
}

} // namespace

QString Translation::nameError(const QString& language)
{
    static const QRegularExpression form(QStringLiteral("^[A-Za-z0-9_@-]+\\z")); // never a path
    if (form.match(language).hasMatch())
        return {};
    return QStringLiteral("--language \"%1\": write the name of a language, such as de or pt_BR")
        .arg(language);
}

QString Translation::fileName(const QString& language)
{
    return QStringLiteral("ups-host_%1.qm").arg(language);
}

QString Translation::install(const QString& language, const QString& folder)
{
    if (language.isEmpty())
        return {};
    // Read here and not by the translator: it would take a file of a similar name for one that is missing,
    // and it would crash when the file is made anew while the program runs.
    QFile file(folder + QLatin1Char('/') + fileName(language));
    if (!file.open(QIODevice::ReadOnly))
        return unusable(language, QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    m_content = file.readAll();
    const auto* content = reinterpret_cast<const uchar*>(m_content.constData());
    if (!m_translator.load(content, m_content.size()) || m_translator.isEmpty())
        return unusable(language, QStringLiteral("%1 holds no translation").arg(file.fileName()));

    if (m_qtTranslator.load(QStringLiteral("qtbase_") + language,
                            QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_qtTranslator);
    QCoreApplication::installTranslator(&m_translator); // asked first
    return {};
}
