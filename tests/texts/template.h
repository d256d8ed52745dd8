#pragma once

#include "askedtexts.h"

#include <QStringList>

/// What translators get, and a language that nobody speaks: every letter is replaced by its full-width form,
/// so that whatever is left of English shows, even in parts of a text.
namespace texttemplate {

/// The text in that language; place holders stay.
QString pseudo(QString text);

/// Translates a .ts file into that language, as another one. Returns the texts in it, none if it cannot be
/// read.
std::set<AskedText> translate(const QString& tsFile, const QString& targetFile);

/// Runs a program; what it said when it failed, and the empty text when it did not.
QString run(const QString& program, const QStringList& arguments);

} // namespace texttemplate
