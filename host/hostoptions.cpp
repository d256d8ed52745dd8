#include "hostoptions.h"

#include "isotime.h"
#include "translation.h"

#include <QCommandLineParser>
#include <QDir>
#include <QRegularExpression>

namespace {

constexpr int maxSeconds = 2000000; // in ms this still fits the timer's int
constexpr int maxLogIntervalS = 86400;
constexpr int maxKeepDays = 36500;
constexpr int downloadHistory = 1045; // its value is the name of a file
const auto noJournal = QLatin1String("none");

struct Options
{
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Prints this help.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Prints the version.")};
    QCommandLineOption headless{
        QStringLiteral("headless"),
        QStringLiteral("Runs without a window and prints what happens; needs no display.")};
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
    QCommandLineOption check{
        QStringLiteral("check"),
        QStringLiteral("Looks at each unit once, or at the units named, and says what stands in the way.")};
    QCommandLineOption screenshots{
        QStringLiteral("screenshots"),
        QStringLiteral("Writes a picture of every page and dialog of the first unit as PNG into the folder "
                       "<dir>, without a display, and ends; --seconds limits how long it waits for the unit "
                       "to be on mains, battery and bypass (240)."),
        QStringLiteral("dir")};
    QCommandLineOption poll{
        QStringLiteral("poll"),
        QStringLiteral("Asks each unit for its cycles instead of starting the unit's own thread.")};
    QCommandLineOption journal{
        QStringLiteral("journal"),
        QStringLiteral(
            "Keeps events and values in this SQLite file (journal.sqlite); \"none\" keeps nothing."),
        QStringLiteral("file"), QStringLiteral("journal.sqlite")};
    QCommandLineOption logInterval{
        QStringLiteral("log-interval"),
        QStringLiteral("Keeps the values of each answering unit every <s> seconds (10)."),
        QStringLiteral("s"), QStringLiteral("10")};
    QCommandLineOption keepDays{
        QStringLiteral("keep-days"),
        QStringLiteral("Deletes what is older than <n> days from the journal; 0 keeps everything (0)."),
        QStringLiteral("n"), QStringLiteral("0")};
    QCommandLineOption exportEvents{
        QStringLiteral("export-events"),
        QStringLiteral("Writes the events of the journal as CSV, \"-\" to standard output, and ends. Works "
                       "beside a running host."),
        QStringLiteral("file")};
    QCommandLineOption exportLog{QStringLiteral("export-log"),
                                 QStringLiteral("The same for the values kept."), QStringLiteral("file")};
    QCommandLineOption from{
        QStringLiteral("from"),
        QStringLiteral("Exports from this time on: 2024-03-05, 2024-03-05T07:00, 2024-03-05T07:00:00+01:00; "
                       "local time without an offset."),
        QStringLiteral("time")};
    QCommandLineOption to{
        QStringLiteral("to"),
        QStringLiteral("Exports what is before this time; a date alone is the end of that day."),
        QStringLiteral("time")};
    QCommandLineOption unit{QStringLiteral("unit"), QStringLiteral("Exports this unit only."),
                            QStringLiteral("name")};
    QCommandLineOption language{
        QStringLiteral("language"),
        QStringLiteral("Shows the texts of the translator file ups-host_<name>.qm beside the program."),
        QStringLiteral("name")};
    QCommandLineOption verbose{QStringLiteral("verbose"),
                               QStringLiteral("Shows the plugin's debug lines on standard error.")};
};

void describe(QCommandLineParser& parser, const Options& options)
{
    parser.addPositionalArgument(QStringLiteral("unit"),
                                 QStringLiteral("With --check: the units to look at."),
                                 QStringLiteral("[unit...]"));
    parser.setApplicationDescription(QStringLiteral("Monitors the units of PVMX/drovaPanel/db/dev.ini beside "
                                                    "the program, in a window unless an option says "
                                                    "otherwise.\n"
                                                    "Exit status: 0 every unit answered or the window was "
                                                    "closed, 3 a unit never answered, 2 wrong use or "
                                                    "configuration, 1 output lost, 4 a picture is missing."));
    parser.addOptions({options.help,        options.version,  options.headless,     options.seconds,
                       options.units,       options.plugin,   options.control,      options.check,
                       options.screenshots, options.json,     options.poll,         options.journal,
                       options.logInterval, options.keepDays, options.exportEvents, options.exportLog,
                       options.from,        options.to,       options.unit,         options.language,
                       options.verbose});
}

// The readers return what is wrong, or an empty text.

QString readNumber(const QCommandLineParser& parser, const QCommandLineOption& option, int min, int max,
                   int* number)
{
    const QString text = parser.value(option);
    bool isNumber = false;
    *number = text.toInt(&isNumber);
    if (isNumber && *number >= min && *number <= max)
        return {};
    return QStringLiteral("--%1 %2: a whole number from %3 to %4 is needed")
        .arg(option.names().constFirst(), text, QString::number(min), QString::number(max));
}

QString readTime(const QCommandLineParser& parser, const QCommandLineOption& option,
                 isotime::DateMeans dateMeans, std::optional<qint64>* utcMs)
{
    if (!parser.isSet(option))
        return {};
    *utcMs = isotime::toUtcMs(parser.value(option), dateMeans);
    if (utcMs->has_value())
        return {};
    return QStringLiteral("--%1 \"%2\": write a time such as 2024-03-05 or 2024-03-05T07:00:00+01:00")
        .arg(option.names().constFirst(), parser.value(option));
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

// An option that has no effect together with the others is refused: whoever gave it expects one.
QString readExports(const QCommandLineParser& parser, const Options& options, HostOptions* result)
{
    ExportOptions& exports = result->exports;
    exports.eventsFile = parser.value(options.exportEvents);
    exports.logFile = parser.value(options.exportLog);
    exports.unitName = parser.value(options.unit);
    const QString fromError =
        readTime(parser, options.from, isotime::DateMeans::StartOfDay, &exports.fromUtcMs);
    const QString toError = readTime(parser, options.to, isotime::DateMeans::EndOfDay, &exports.toUtcMs);
    if (!fromError.isEmpty() || !toError.isEmpty())
        return fromError.isEmpty() ? toError : fromError;
    for (const QCommandLineOption* option : {&options.exportEvents, &options.exportLog, &options.unit}) {
        if (parser.isSet(*option) && parser.value(*option).isEmpty())
            return QStringLiteral("--%1: a name is needed").arg(option->names().constFirst());
    }
    for (const QCommandLineOption* option : {&options.from, &options.to, &options.unit}) {
        if (parser.isSet(*option) && !exports.isWanted())
            return QStringLiteral("--%1 goes with --export-events or --export-log")
                .arg(option->names().constFirst());
    }
    for (const QCommandLineOption* option :
         {&options.units, &options.control, &options.seconds, &options.language}) {
        if (parser.isSet(*option) && exports.isWanted())
            return QStringLiteral("--%1 does not go with an export").arg(option->names().constFirst());
    }
    if (exports.isWanted() && result->journalFile.isEmpty())
        return QStringLiteral("--journal none: an export needs a journal");
    if (exports.isWanted() && exports.eventsFile == exports.logFile)
        return QStringLiteral("--export-log %1: the events go there already").arg(exports.logFile);
    if (exports.fromUtcMs && exports.toUtcMs && *exports.fromUtcMs >= *exports.toUtcMs)
        return QStringLiteral("--to %1: that is before --from").arg(parser.value(options.to));
    return {};
}

QString readJournal(const QCommandLineParser& parser, const Options& options, HostOptions* result)
{
    const QString file = parser.value(options.journal);
    if (file.isEmpty())
        return QStringLiteral("--journal: the name of a file is needed, or \"none\"");
    result->journalFile = file == noJournal ? QString() : file;
    return {};
}

QString readCheck(const QCommandLineParser& parser, const Options& options, HostOptions* result)
{
    result->isCheck = true;
    for (const QCommandLineOption* option :
         {&options.control, &options.seconds, &options.json, &options.poll, &options.language}) {
        if (parser.isSet(*option))
            return QStringLiteral("--%1 does not go with --check").arg(option->names().constFirst());
    }
    result->unitNames += parser.positionalArguments();
    result->unitNames.removeDuplicates();
    return result->exports.isWanted() ? QStringLiteral("an export does not go with --check") : QString();
}

QString readScreenshots(const QCommandLineParser& parser, const Options& options, HostOptions* result)
{
    result->screenshotFolder = parser.value(options.screenshots);
    if (result->screenshotFolder.isEmpty())
        return QStringLiteral("--screenshots: the name of a folder is needed");
    for (const QCommandLineOption* option : {&options.control, &options.json, &options.check,
                                             &options.journal, &options.logInterval, &options.keepDays}) {
        if (parser.isSet(*option))
            return QStringLiteral("--%1 does not go with --screenshots").arg(option->names().constFirst());
    }
    return result->exports.isWanted() ? QStringLiteral("an export does not go with --screenshots")
                                      : QString();
}

// What only lines of text can show, or a person at the window does there.
QString readHeadless(const QCommandLineParser& parser, const Options& options, HostOptions* result)
{
    result->isHeadless = parser.isSet(options.headless);
    for (const QCommandLineOption* option : {&options.json, &options.control}) {
        if (parser.isSet(*option) && result->wantsWindow())
            return QStringLiteral("--%1 goes with --headless").arg(option->names().constFirst());
    }
    return {};
}

QString readValues(const QCommandLineParser& parser, const Options& options, HostOptions* result)
{
    QStringList errors;
    if (parser.isSet(options.seconds))
        errors += readNumber(parser, options.seconds, 0, maxSeconds, &result->seconds);
    if (parser.isSet(options.units))
        errors += readUnitNames(parser.value(options.units), &result->unitNames);
    const QStringList controls = parser.values(options.control);
    for (const QString& control : controls)
        errors += readControl(control, &result->controls);
    errors += readNumber(parser, options.logInterval, 1, maxLogIntervalS, &result->logIntervalS);
    errors += readNumber(parser, options.keepDays, 0, maxKeepDays, &result->keepDays);
    errors += readJournal(parser, options, result);
    errors += readExports(parser, options, result);
    result->pluginFile = parser.value(options.plugin);
    if (parser.isSet(options.plugin) && result->pluginFile.isEmpty())
        errors += QStringLiteral("--plugin: the name of a file is needed");
    result->language = parser.value(options.language);
    if (parser.isSet(options.language))
        errors += Translation::nameError(result->language);
    if (parser.isSet(options.screenshots))
        errors += readScreenshots(parser, options, result);
    if (parser.isSet(options.check))
        errors += readCheck(parser, options, result);
    else if (!parser.positionalArguments().isEmpty())
        errors += QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().constFirst());
    errors += readHeadless(parser, options, result);
    errors.removeAll(QString());
    return errors.value(0);
}

// The journal's standard name is not the caller's: it stays relative to where the host works.
void makePathsAbsolute(const QDir& base, bool isJournalGiven, HostOptions* result)
{
    const auto resolve = [&base](QString* path) {
        if (!path->isEmpty() && *path != QLatin1String("-"))
            *path = base.absoluteFilePath(*path);
    };
    for (QString* path : {&result->pluginFile, &result->screenshotFolder, &result->exports.eventsFile,
                          &result->exports.logFile})
        resolve(path);
    if (isJournalGiven)
        resolve(&result->journalFile);
    for (ControlRequest& request : result->controls) {
        if (request.id == downloadHistory)
            resolve(&request.value);
    }
}

} // namespace

ParsedOptions parseOptions(const QStringList& arguments, const QString& pathBase)
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
    if (!pathBase.isEmpty())
        makePathsAbsolute(QDir(pathBase), parser.isSet(options.journal), &parsed.options);
    return parsed;
}
