#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

namespace simulation::faults {

/// What is done to a request, its reply or the line.
enum class Kind
{
    NoAnswer,
    Late,
    WrongCrc,
    WrongUnit,
    Truncated,
    Duplicated,
    Split,
    Exception,
    Noise,
    Reset,
    Refused,
    BlackHole,
    None ///< ends all faults
};

/// One fault as it was asked for: what it does, and to which requests. Without any selector it is every
/// request, from now on, of every unit, over every transport.
struct Plan
{
    Kind kind = Kind::None;
    int amount = 0;  ///< delay or gap in ms, bytes, exception code or length of an outage in ms; 0: not given
    QByteArray text; ///< the fault and its amount, as given
    std::optional<int> address;  ///< requests for this unit only
    std::optional<int> function; ///< requests with this function code only
    std::optional<int> block;    ///< requests that begin at this register only
    std::optional<int> request;  ///< not before the Nth of them, and then only once unless `times` is given
    std::optional<int> times;    ///< so often
    bool every = false;
    std::optional<std::chrono::milliseconds> lifetime;

    /// Whether it concerns the line or server as a whole.
    bool isOutage() const { return kind == Kind::Refused || kind == Kind::BlackHole; }
    /// Whether it begins when it is asked for and not with a request: an outage that names no requests.
    bool beginsAtOnce() const
    {
        return isOutage() && !every && !address && !function && !block && !request && !times;
    }
};

/// Reads a fault such as "late 1500 function 4 times 3"; docs/faults.md has them all. Nothing when something
/// in it is wrong, with one line in `error` that says what would be right.
std::optional<Plan> parse(const QString& text, QString* error);

/// The faults and selectors in a few lines, for a help text.
QString syntax();

} // namespace simulation::faults
