#pragma once

#include "faultplan.h"
#include "unitreport.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace simulation {

/// What the command line of ups-sim asks for.
struct Options
{
    bool help = false;
    std::optional<int> tcpPort; ///< 0 is any free port
    QString bindAddress = QStringLiteral("127.0.0.1");
    QString serialLink; ///< empty without a serial line
    int baud = 9600;    ///< 0 is unpaced
    std::vector<UnitIdentity> units;
    QString tracePath;                          ///< empty without a trace
    QString scenario = QStringLiteral("mains"); ///< a built-in one or a file
    std::uint32_t seed = 0;
    double timeScale = 1; ///< virtual seconds in one of this machine
    std::vector<faults::Plan> faults;
};

/// Reads the command line; `arguments` begin with the program's name. Nothing when something in it is wrong,
/// with one line in `error` that names it and says what would be right.
std::optional<Options> parseOptions(const QStringList& arguments, QString* error);

/// The text that --help prints.
QString helpText();

} // namespace simulation
