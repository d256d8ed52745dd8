#include "hostoptions.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace {

constexpr int maxSeconds = 2000000; // in ms this still fits the timer's int

struct Options
{
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Prints this help.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Prints the version.")};
    QCommandLineOption headless{QStringLiteral("headless"),
                                QStringLiteral("Runs without a window (the only mode so far).")};
    QCommandLineOption seconds{QStringLiteral("seconds"),
                               QStringLiteral("Ends after <n> seconds; 0 runs until a signal."),
                               QStringLiteral("n")};
    QCommandLineOption units{QStringLiteral("units"), QStringLiteral("Runs only these units."),
                             QStringLiteral("name,name")};
    QCommandLineOption plugin{QStringLiteral("plugin"),
                              QStringLiteral("Loads this plugin instead of the one beside the program."),
                              QStringLiteral("file")};
    QCommandLineOption control{
        QStringLiteral("control"),
        QStringLiteral("Sends a command once the unit communicates; the value may be empty. Repeatable."),
        QStringLiteral("unit,id,value")};
    QCommandLineOption json{
        QStringLiteral("json"),
        QStringLiteral("Prints each event as one line of JSON, and nothing else, on standard output.")};
    QCommandLineOption poll{
        QStringLiteral("poll"),
        QStringLiteral("Asks each unit for its cycles instead of starting the unit's own thread.")};
    QCommandLineOption verbose{QStringLiteral("verbose"),
                               QStringLiteral("Shows the plugin's debug lines on standard error.")};
};

void describe(QCommandLineParser& parser, const Options& options)
{
    parser.setApplicationDescription(QStringLiteral(
        "Monitors the units of PVMX/drovaPanel/db/dev.ini beside the program.\n"
        "Exit status: 0 every unit answered, 3 one never did, 2 wrong use or configuration, 1 output lost."));
    parser.addOptions({options.help, options.version, options.headless, options.seconds, options.units,
                       options.plugin, options.control, options.json, options.poll, options.verbose});
}

// The three readers return what is wrong, or an empty text.

QString readSeconds(const QString& text, int* seconds)
{
    bool isNumber = false;
    *seconds = text.toInt(&isNumber);
    if (isNumber && *seconds >= 0 && *seconds <= maxSeconds)
        return {};
    return QStringLiteral("--seconds %1: a whole number from 0 to %2 is needed").arg(text).arg(maxSeconds);
}

QString readUnitNames(const QString& text, QStringList* names)
{
    const QStringList parts = text.split(QLatin1Char(','));
    for (const QString& part : parts)
        names->append(part.trimmed());
    names->removeDuplicates();
    if (names->contains(QString()))
        return QStringLiteral("--units \"%1\": write the names separated by commas").arg(text);
    return {};
}

QString readControl(const QString& text, QList<ControlRequest>* controls)
{
    // The shortest name that is followed by a number: a value may hold commas and numbers.
    static const QRegularExpression form(QStringLiteral("^(.+?),([0-9]+),(.*)$"),
                                         QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(text);
    bool isNumber = false;
    const int id = match.captured(2).toInt(&isNumber);
    if (!isNumber)
        return QStringLiteral("--control \"%1\": write UNIT,ID,VALUE, where VALUE may be empty").arg(text);
    controls->append({match.captured(1), id, match.captured(3)});
    return {};
}

QString readValues(const QCommandLineParser& parser, const Options& options, HostOptions* result)
{
    QStringList errors;
    if (parser.isSet(options.seconds))
        errors += readSeconds(parser.value(options.seconds), &result->seconds);
    if (parser.isSet(options.units))
        errors += readUnitNames(parser.value(options.units), &result->unitNames);
    const QStringList controls = parser.values(options.control);
    for (const QString& control : controls)
        errors += readControl(control, &result->controls);
    result->pluginFile = parser.value(options.plugin);
    if (parser.isSet(options.plugin) && result->pluginFile.isEmpty())
        errors += QStringLiteral("--plugin: the name of a file is needed");
    if (!parser.positionalArguments().isEmpty())
        errors += QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().constFirst());
    errors.removeAll(QString());
    return errors.value(0);
}

} // namespace

ParsedOptions parseOptions(const QStringList& arguments)
{
    const Options options;
    QCommandLineParser parser;
    describe(parser, options);

    ParsedOptions parsed;
    if (!parser.parse(arguments)) {
        parsed.error = parser.errorText();
        return parsed;
    }
    if (parser.isSet(options.help)) {
        parsed.infoText = parser.helpText();
        return parsed;
    }
    if (parser.isSet(options.version)) {
        parsed.infoText = QStringLiteral("ups-host " UPS_HOST_VERSION "\n");
        return parsed;
    }
    parsed.options.isJson = parser.isSet(options.json);
    parsed.options.isPolling = parser.isSet(options.poll);
    parsed.options.isVerbose = parser.isSet(options.verbose);
    parsed.error = readValues(parser, options, &parsed.options);
    return parsed;
}
