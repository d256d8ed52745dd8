// Prints the texts that stand in the plugin's tables, in each context in which they are translated, marked so
// that lupdate finds them. The tables carry no marks: they are shared by contexts, and the clearing texts are
// put together. Instead of reading the tables once more, this asks the objects that do.

#include "askedtexts.h"
#include "vek5_10_30k_view.h"
#include "vek5font.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

QByteArray literal(QByteArray text)
{
    return '"' + text.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n") + '"';
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    AskedTexts asked;
    QCoreApplication::installTranslator(&asked);
    const vek5Font dictionary; // both translate all their texts when they are made
    const vek5_10_30k_View pages;
    const std::set<AskedText> texts = asked.texts();
    for (const AskedText& text : texts)
        std::printf("QT_TRANSLATE_NOOP(%s, %s);\n", literal(text.context).constData(),
                    literal(text.source).constData());
    return std::fflush(stdout) == 0 ? 0 : 1;
}
