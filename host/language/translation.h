#pragma once

#include <QByteArray>
#include <QString>
#include <QTranslator>

/// The language of what people read, texts of the plugin included: a translator file beside the program, and
/// Qt's own texts where the system has them. Installed as long as this object lives. GUI thread.
///
/// The "Language" of param.ini is something else: a number that the plugin reads and that the host hands on
/// to the pages. Neither sets the other.
class Translation
{
public:
    /// Why a text cannot name a language, in one line; empty when it can.
    static QString nameError(const QString& language);
    /// The translator file of a language, without its folder: ups-host_de.qm for "de".
    static QString fileName(const QString& language);

    /// Installs the language of the translator file in folder; nothing for an empty name. Needs an
    /// application object and comes before the plugin is loaded, which keeps the event texts as it first
    /// finds them. Returns what is wrong, in one line, and has then installed nothing; empty when done.
    QString install(const QString& language, const QString& folder);

private:
    QByteArray m_content; // the translator reads here
    QTranslator m_translator;
    QTranslator m_qtTranslator;
};
