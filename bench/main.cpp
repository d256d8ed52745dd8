// Runs the measures that are named, or all, prints a table and writes it as JSON. The exit status is 0 when
// all ran, whether or not every bar is met: the table tells.

#include "failure.h"
#include "measures.h"
#include "results.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

namespace {

struct Measure
{
    const char* name;
    const char* help;
    void (*run)(Results&);
};

// clang-format off
constexpr Measure measures[] = {
    {"tcp",    "a full query over TCP, beside libmodbus and QtSerialBus", measureTcp},
    {"serial", "a full query over an unpaced pty, beside libmodbus",      measureSerial},
    {"line",   "a full query at 9600 baud, beside the wire time",         measureLine},
    {"cycle",  "the collector's own work, beside filling a plain map",    measureCycle},
    {"units",  "1, 16, 64 and 256 units in one host",                     measureUnits},
    {"load",   "loading the plugin",                                      measureLoad},
    {"window", "start of a host to its painted window",                   measureWindow},
    {"pages",  "the unit's pages",                                        measurePages},
};
// clang-format on

const Measure* find(const QString& name)
{
    for (const Measure& measure : measures) {
        if (name == QLatin1String(measure.name))
            return &measure;
    }
    return nullptr;
}

QString namesText()
{
    QString text(QStringLiteral("What to measure; everything without a name:"));
    for (const Measure& measure : measures)
        text +=
            QStringLiteral("\n%1 %2").arg(QLatin1String(measure.name), -7).arg(QLatin1String(measure.help));
    return text;
}

QVector<const Measure*> chosen(const QStringList& names)
{
    QVector<const Measure*> result;
    for (const Measure& measure : measures) {
        if (names.isEmpty() || names.contains(QLatin1String(measure.name)))
            result.append(&measure);
    }
    for (const QString& name : names) {
        if (!find(name))
            fail(QStringLiteral("there is no measure \"%1\" (--help lists them)").arg(name));
    }
    return result;
}

// What ports and collectors say of themselves for a person who looks for a fault is no part of the table.
void printUnlessDebug(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

int run()
{
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Writes the results to FILE as well."),
                                  QStringLiteral("FILE"));
    const QCommandLineOption commit(QStringLiteral("commit"),
                                    QStringLiteral("What the results say was measured."),
                                    QStringLiteral("TEXT"), QStringLiteral("unknown"));
    QCommandLineOption loadOnce(QStringLiteral("load-once")); // for this program's own use
    loadOnce.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({json, commit, loadOnce});
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("name"), namesText(), QStringLiteral("[name...]"));
    parser.process(*QCoreApplication::instance());
    if (parser.isSet(loadOnce))
        return loadPluginOnce();

    const auto wanted = chosen(parser.positionalArguments());
    Results results(parser.value(commit));
    results.printHead();
    for (const Measure* measure : wanted)
        measure->run(results);
    return parser.isSet(json) && !results.writeJson(parser.value(json)) ? 1 : 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler(printUnlessDebug);
    try {
        return run();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "ups-bench: %s\n", failure.what());
        return 1;
    }
}
