#include "scenarioparser.h"

#include "commandrows.h"
#include "scenarioforms.h"
#include "settings.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace simulation {

namespace {

constexpr double msPerSecond = 1000;
constexpr double maxTimeS = 10 * 24 * 3600;

bool isNumberName(const QString& token)
{
    return token.at(0).isUpper();
}

/// The number that a word is, within limits and whole where it has to be; nothing otherwise.
std::optional<double> numberOf(const QString& word, const QString& name, const NumberLimits& limits)
{
    bool isNumber = false;
    const double value = word.toDouble(&isNumber);
    const bool mayBeDecimal = std::any_of(std::begin(decimalNames), std::end(decimalNames),
                                          [&](const char* each) { return name == QLatin1String(each); });
    const bool isWithin = isNumber && value >= limits.min && value <= limits.max;
    return isWithin && (mayBeDecimal || value == std::floor(value)) ? std::optional(value) : std::nullopt;
}

/// How far the words of a line fit a form.
enum class Fit
{
    None,   ///< it is another action
    Number, ///< but for a number that is out of its limits
    Whole
};

Fit fit(const QStringList& words, const Form& form, Action& action)
{
    const QStringList tokens = QString::fromLatin1(form.syntax).split(QLatin1Char(' '));
    const bool takesRest = tokens.constLast() == QLatin1String("TEXT");
    if (takesRest ? words.size() < tokens.size() : words.size() != tokens.size())
        return Fit::None;
    Fit result = Fit::Whole;
    action.verb = form.verb;
    action.choice = 0;
    action.numberCount = 0;
    for (int i = 0; i < tokens.size(); ++i) {
        const QString& token = tokens.at(i);
        if (token == QLatin1String("TEXT"))
            break;
        if (isNumberName(token)) {
            if (!words.at(i).at(0).isLetter()) {
                const auto index = static_cast<std::size_t>(action.numberCount++);
                const std::optional<double> number = numberOf(words.at(i), token, form.limits[index]);
                action.numbers[index] = number.value_or(0);
                result = number ? result : Fit::Number;
                continue;
            }
            return Fit::None;
        }
        const int choice = token.split(QLatin1Char('|')).indexOf(words.at(i));
        if (choice < 0)
            return Fit::None;
        if (token.contains(QLatin1Char('|')))
            action.choice = choice;
    }
    return result;
}

/// "VOLTS from 0 to 500" for each number of a form.
QString limitsOf(const Form& form)
{
    QStringList limits;
    const QStringList tokens = QString::fromLatin1(form.syntax).split(QLatin1Char(' '));
    for (const QString& token : tokens) {
        if (isNumberName(token)) {
            const NumberLimits& each = form.limits[limits.size()];
            limits.append(QStringLiteral("%1 is a number from %2 to %3")
                              .arg(token, QString::number(each.min), QString::number(each.max, 'g', 8)));
        }
    }
    return limits.join(QStringLiteral(", "));
}

/// The ways to write the action that begins with this word; all actions when none does.
QString formsLike(const QString& firstWord)
{
    QStringList like;
    QStringList verbs;
    for (const Form& form : forms) {
        const QString syntax = QString::fromLatin1(form.syntax);
        const QString verb = syntax.section(QLatin1Char(' '), 0, 0);
        if (verb == firstWord)
            like.append(QLatin1Char('"') + syntax + QLatin1Char('"'));
        if (!verbs.contains(verb))
            verbs.append(verb);
    }
    return like.isEmpty()
               ? QStringLiteral("there is no such action; there are %1").arg(verbs.join(QStringLiteral(", ")))
               : QStringLiteral("write %1").arg(like.join(QStringLiteral(" or ")));
}

/// Reads line after line and stops at the first thing that is wrong.
class Parser
{
public:
    explicit Parser(const FaultHook& checkFault)
        : m_checkFault(checkFault)
    {}

    /// What is wrong with the line; empty when it was read.
    QString readLine(QStringList words)
    {
        if (m_hasRepeat)
            return QStringLiteral("nothing can follow repeat");
        Action action;
        QString wrong = readTime(words.takeFirst(), action);
        if (wrong.isEmpty())
            wrong = words.isEmpty() ? QStringLiteral("there is no action behind the time")
                                    : readAction(words, action);
        if (!wrong.isEmpty())
            return wrong;
        wrong = checkMeaning(action);
        m_hasRepeat = action.verb == Verb::Repeat;
        m_scenario.push_back(action);
        return wrong;
    }

    Scenario takeScenario() { return std::move(m_scenario); }

private:
    QString readTime(const QString& word, Action& action) const
    {
        const std::int64_t lastMs = m_scenario.empty() ? 0 : m_scenario.back().atMs;
        const bool isRelative = word.startsWith(QLatin1Char('+'));
        bool isNumber = false;
        const double seconds = word.toDouble(&isNumber);
        if (!isNumber || !(seconds >= 0 && seconds <= maxTimeS))
            return QStringLiteral("\"%1\" is no time: give seconds, or + and seconds after the line before")
                .arg(word);
        action.atMs = std::llround(seconds * msPerSecond) + (isRelative ? lastMs : 0);
        return action.atMs >= lastMs
                   ? QString()
                   : QStringLiteral("the time %1 lies before that of the line before").arg(word);
    }

    static QString readAction(const QStringList& words, Action& action)
    {
        action.text = words.join(QLatin1Char(' ')).toUtf8();
        QString wrong;
        for (const Form& form : forms) {
            switch (fit(words, form, action)) {
            case Fit::Whole:
                return {};
            case Fit::Number:
                wrong = QString::fromUtf8(action.text) + QStringLiteral(": ") + limitsOf(form);
                break;
            case Fit::None:
                break;
            }
        }
        return wrong.isEmpty() ? QStringLiteral("\"%1\": %2")
                                     .arg(QString::fromUtf8(action.text), formsLike(words.constFirst()))
                               : wrong;
    }

    /// What the words alone do not tell: whether a unit would take it.
    QString checkMeaning(const Action& action) const
    {
        const int first = static_cast<int>(action.numbers[0]);
        const auto raw = static_cast<std::uint16_t>(action.numbers[1]);
        if (action.verb == Verb::Setting && checkSettings(first - 3000, {raw}) != Refusal::None)
            return QStringLiteral("setting %1 does not take %2").arg(first).arg(raw);
        if (action.verb == Verb::Command && !unitmap::rowOfCommand(first))
            return QStringLiteral("there is no command %1").arg(first);
        if (action.verb == Verb::Repeat && action.atMs == 0)
            return QStringLiteral("repeat needs a time after 0");
        if (action.verb != Verb::Fault)
            return {};
        return m_checkFault ? QString::fromStdString(m_checkFault(action.faultText()))
                            : QStringLiteral("faults are not known here");
    }

    const FaultHook& m_checkFault;
    Scenario m_scenario;
    bool m_hasRepeat = false;
};

} // namespace

std::optional<Scenario> parseScenario(const QByteArray& text, const QString& name,
                                      const FaultHook& checkFault, QString* error)
{
    Parser parser(checkFault);
    int number = 0;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray& line : lines) {
        ++number;
        const QString content = QString::fromUtf8(line).section(QLatin1Char('#'), 0, 0).simplified();
        if (content.isEmpty())
            continue;
        const QString wrong = parser.readLine(content.split(QLatin1Char(' ')));
        if (!wrong.isEmpty()) {
            *error = QStringLiteral("%1:%2: %3").arg(name, QString::number(number), wrong);
            return std::nullopt;
        }
    }
    return parser.takeScenario();
}

} // namespace simulation
