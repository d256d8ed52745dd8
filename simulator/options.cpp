#include "options.h"

#include <QCommandLineParser>

#include <arpa/inet.h>

#include <algorithm>

namespace simulation {

namespace {

const QString tcpName = QStringLiteral("tcp");
const QString bindName = QStringLiteral("bind");
const QString serialName = QStringLiteral("serial");
const QString baudName = QStringLiteral("baud");
const QString addressName = QStringLiteral("address");
const QString nameName = QStringLiteral("name");
const QString traceName = QStringLiteral("trace");
const QString faultName = QStringLiteral("fault");
const QString scenarioName = QStringLiteral("scenario");
const QString seedName = QStringLiteral("seed");
const QString timeScaleName = QStringLiteral("time-scale");
const QString helpName = QStringLiteral("help");

constexpr int maxNameBytes = 16;

void declareOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Simulated three-phase UPS units that speak Modbus over TCP, over a serial line, or both."));
    parser.addOptions({
        {tcpName, QStringLiteral("Serve Modbus TCP; any free port without PORT or with 0."),
         QStringLiteral("PORT")},
        {bindName, QStringLiteral("IPv4 address to listen on (127.0.0.1)."), QStringLiteral("ADDRESS")},
        {serialName, QStringLiteral("Serve Modbus RTU on a pseudo-terminal that LINK points to."),
         QStringLiteral("LINK")},
        {baudName, QStringLiteral("Pace of the serial line (9600); 0 for none."), QStringLiteral("BAUD")},
        {addressName, QStringLiteral("Modbus address of a unit, 1 to 247 (1); repeat for more units."),
         QStringLiteral("N")},
        {nameName,
         QStringLiteral("Name of a unit, at most 16 bytes (UPS-N); repeat in the order of --address."),
         QStringLiteral("TEXT")},
        {traceName, QStringLiteral("Append what the units truly did to FILE, as JSON lines."),
         QStringLiteral("FILE")},
        {faultName,
         QStringLiteral("Misbehave from the start; repeat for more. One of: %1.").arg(faults::syntax()),
         QStringLiteral("TEXT")},
        {scenarioName,
         QStringLiteral(
             "What happens to the units: FILE (docs/scenarios.md), or mains (the mains fails every "
             "half minute, the default), demo (two minutes that show every mode) or none."),
         QStringLiteral("FILE")},
        {seedName, QStringLiteral("Begin all chance from N (0): the same N gives the same course."),
         QStringLiteral("N")},
        {timeScaleName, QStringLiteral("Let the units' time run X times as fast, 0.01 to 1000 (1)."),
         QStringLiteral("X")},
        {{QStringLiteral("h"), helpName}, QStringLiteral("Show this text.")},
    });
}

/// The parser knows no optional values: a --tcp without one gets the 0 that it stands for.
QStringList completed(QStringList arguments)
{
    const QString tcp = QStringLiteral("--tcp");
    for (int i = 1; i < arguments.size(); ++i) {
        const bool hasValue = i + 1 < arguments.size() && !arguments.at(i + 1).startsWith(QLatin1Char('-'));
        if (arguments.at(i) == tcp && !hasValue)
            arguments[i] = QStringLiteral("--tcp=0");
    }
    return arguments;
}

/// A whole number within limits, or nothing and a line in `error`.
std::optional<int> number(const QString& option, const QString& text, int min, int max, QString* error)
{
    bool isNumber = false;
    const int value = text.toInt(&isNumber);
    if (isNumber && value >= min && value <= max)
        return value;
    *error = QStringLiteral("--%1 %2: give a whole number from %3 to %4")
                 .arg(option, text, QString::number(min), QString::number(max));
    return std::nullopt;
}

bool readTransports(const QCommandLineParser& parser, Options& options, QString* error)
{
    if (!parser.isSet(tcpName) && !parser.isSet(serialName)) {
        *error = QStringLiteral("no transport: give --tcp [PORT], --serial LINK or both");
        return false;
    }
    for (const auto& [option, needed] : {std::pair(bindName, tcpName), std::pair(baudName, serialName)}) {
        if (parser.isSet(option) && !parser.isSet(needed)) {
            *error = QStringLiteral("--%1 has no use without --%2").arg(option, needed);
            return false;
        }
    }
    if (parser.isSet(tcpName)) {
        options.tcpPort = number(tcpName, parser.value(tcpName), 0, 65535, error);
        if (!options.tcpPort)
            return false;
    }
    if (parser.isSet(bindName))
        options.bindAddress = parser.value(bindName);
    in_addr parsed{};
    if (::inet_pton(AF_INET, options.bindAddress.toLatin1().constData(), &parsed) != 1) {
        *error = QStringLiteral("--bind %1: give an IPv4 address such as 127.0.0.1").arg(options.bindAddress);
        return false;
    }
    options.serialLink = parser.value(serialName);
    if (parser.isSet(serialName) && options.serialLink.isEmpty()) {
        *error = QStringLiteral("--serial: give the path of the link to make");
        return false;
    }
    if (parser.isSet(baudName)) {
        const std::optional<int> baud = number(baudName, parser.value(baudName), 0, 4000000, error);
        if (!baud)
            return false;
        options.baud = *baud;
    }
    return true;
}

bool readCourse(const QCommandLineParser& parser, Options& options, QString* error)
{
    constexpr double minScale = 0.01;
    constexpr double maxScale = 1000;
    if (parser.isSet(scenarioName))
        options.scenario = parser.value(scenarioName);
    if (options.scenario.isEmpty()) {
        *error = QStringLiteral("--scenario: give a file, or one of mains, demo and none");
        return false;
    }
    if (parser.isSet(seedName)) {
        const std::optional<int> seed = number(seedName, parser.value(seedName), 0, 1000000000, error);
        if (!seed)
            return false;
        options.seed = static_cast<std::uint32_t>(*seed);
    }
    if (parser.isSet(timeScaleName)) {
        const QString text = parser.value(timeScaleName);
        options.timeScale = text.toDouble();
        if (!(options.timeScale >= minScale && options.timeScale <= maxScale)) {
            *error = QStringLiteral("--time-scale %1: give a number from 0.01 to 1000").arg(text);
            return false;
        }
    }
    return true;
}

bool isUnitName(const QByteArray& name)
{
    const bool isPrintable = std::none_of(name.begin(), name.end(), [](char byte) {
        const auto code = static_cast<unsigned char>(byte);
        return code < 0x20 || code == 0x7F;
    });
    return !name.isEmpty() && name.size() <= maxNameBytes && isPrintable;
}

bool readUnits(const QCommandLineParser& parser, Options& options, QString* error)
{
    QStringList addresses = parser.values(addressName);
    const QStringList names = parser.values(nameName);
    if (addresses.isEmpty())
        addresses.append(QStringLiteral("1"));
    if (names.size() > addresses.size()) {
        *error = QStringLiteral("--name %1: there are more names than units").arg(names.at(addresses.size()));
        return false;
    }
    for (int i = 0; i < addresses.size(); ++i) {
        const std::optional<int> address = number(addressName, addresses.at(i), 1, 247, error);
        if (!address)
            return false;
        const bool isTaken = std::any_of(options.units.begin(), options.units.end(),
                                         [&](const UnitIdentity& unit) { return unit.address == *address; });
        if (isTaken) {
            *error =
                QStringLiteral("--address %1 is given twice: units on one line need addresses of their own")
                    .arg(*address);
            return false;
        }
        const QString standardName = QStringLiteral("UPS-%1").arg(*address);
        const QByteArray name = (i < names.size() ? names.at(i) : standardName).toUtf8();
        if (!isUnitName(name)) {
            *error = QStringLiteral("--name %1: give 1 to 16 printable bytes").arg(names.at(i));
            return false;
        }
        options.units.push_back({*address, name});
    }
    return true;
}

bool readFaults(const QCommandLineParser& parser, Options& options, QString* error)
{
    for (const QString& text : parser.values(faultName)) {
        const std::optional<faults::Plan> plan = faults::parse(text, error);
        if (!plan) {
            error->prepend(QStringLiteral("--"));
            return false;
        }
        options.faults.push_back(*plan);
    }
    return true;
}

} // namespace

std::optional<Options> parseOptions(const QStringList& arguments, QString* error)
{
    QCommandLineParser parser;
    declareOptions(parser);
    Options options;
    if (!parser.parse(completed(arguments))) {
        *error = parser.errorText();
        return std::nullopt;
    }
    options.help = parser.isSet(helpName);
    if (options.help)
        return options;
    if (!parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("%1: no such argument").arg(parser.positionalArguments().constFirst());
        return std::nullopt;
    }
    options.tracePath = parser.value(traceName);
    if (parser.isSet(traceName) && options.tracePath.isEmpty()) {
        *error = QStringLiteral("--trace: give the path of the file to write");
        return std::nullopt;
    }
    if (!readTransports(parser, options, error) || !readUnits(parser, options, error) ||
        !readFaults(parser, options, error) || !readCourse(parser, options, error))
        return std::nullopt;
    return options;
}

QString helpText()
{
    QCommandLineParser parser;
    declareOptions(parser);
    return parser.helpText();
}

} // namespace simulation
