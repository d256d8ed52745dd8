#include "faultplan.h"

#include "faultrows.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace simulation::faults {

namespace {

const QLatin1String everyWord("every");
const QLatin1String forWord("for");

constexpr double msPerSecond = 1000;

/// Reads the words of one text from the first to the last, and keeps the first thing that is wrong.
class Reader
{
public:
    explicit Reader(const QString& text)
        : m_text(text.simplified())
        , m_words(m_text.split(QLatin1Char(' ')))
    {}

    std::optional<Plan> read();
    QString error() const { return m_error; }

private:
    bool readFault(Plan& plan);
    bool readSelector(Plan& plan);
    std::optional<int> number(const QString& word, const Number& wanted);
    bool nextIsNumber() const;
    bool fail(const QString& reason);

    const QString m_text;
    QStringList m_words;
    QString m_error;
};

template <typename Rows>
QString namesOf(const Rows& rows)
{
    QStringList names;
    for (const auto& row : rows)
        names.append(QString::fromLatin1(row.name));
    return names.join(QStringLiteral(", "));
}

template <typename Row, std::size_t size>
const Row* findRow(const Row (&rows)[size], const QString& name)
{
    const Row* row = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const Row& each) { return name == QLatin1String(each.name); });
    return row == std::end(rows) ? nullptr : row;
}

std::optional<Plan> Reader::read()
{
    Plan plan;
    if (!readFault(plan))
        return std::nullopt;
    while (!m_words.isEmpty()) {
        if (!readSelector(plan))
            return std::nullopt;
    }
    if (plan.every && plan.request) {
        fail(QStringLiteral("every and request exclude each other"));
        return std::nullopt;
    }
    return plan;
}

bool Reader::readFault(Plan& plan)
{
    const QString name = m_words.takeFirst();
    const FaultRow* row = findRow(faultRows, name);
    if (!row)
        return fail(QStringLiteral("no such fault: give one of %1").arg(namesOf(faultRows)));
    plan.kind = row->kind;
    plan.text = name.toLatin1();
    if (row->amount.isRequired || (row->amount.unit != Unit::None && nextIsNumber())) {
        plan.text += m_words.isEmpty() ? QByteArray() : ' ' + m_words.constFirst().toLatin1();
        const std::optional<int> amount = number(name, row->amount);
        plan.amount = amount.value_or(0);
        return amount.has_value();
    }
    return plan.kind != Kind::None || m_words.isEmpty() ||
           fail(QStringLiteral("none ends all faults and takes no more words"));
}

bool Reader::readSelector(Plan& plan)
{
    const QString name = m_words.takeFirst();
    const SelectorRow* row = findRow(selectorRows, name);
    const bool isKnown = row || name == everyWord || name == forWord;
    if (!isKnown)
        return fail(QStringLiteral("\"%1\" is not expected here: give one of %2, every or for")
                        .arg(name, namesOf(selectorRows)));
    const bool isTwice = row               ? (plan.*row->selector).has_value()
                         : name == forWord ? plan.lifetime.has_value()
                                           : plan.every;
    if (isTwice)
        return fail(QStringLiteral("%1 is given twice").arg(name));
    if (row)
        return (plan.*row->selector = number(name, row->value)).has_value();
    if (name == everyWord)
        return plan.every = true;
    if (const std::optional<int> ms = number(name, lifetimeNumber))
        plan.lifetime = std::chrono::milliseconds(*ms);
    return plan.lifetime.has_value();
}

std::optional<int> Reader::number(const QString& word, const Number& wanted)
{
    const QString text = m_words.isEmpty() ? QString() : m_words.takeFirst();
    const bool isSeconds = wanted.unit == Unit::Seconds;
    bool isNumber = false;
    int value = 0;
    if (isSeconds) {
        const double ms = text.toDouble(&isNumber) * msPerSecond;
        isNumber = isNumber && ms >= wanted.min && ms <= wanted.max;
        value = isNumber ? static_cast<int>(std::lround(ms)) : 0;
    } else {
        value = text.toInt(&isNumber);
        isNumber = isNumber && value >= wanted.min && value <= wanted.max;
    }
    if (isNumber)
        return value;
    const double scale = isSeconds ? msPerSecond : 1;
    fail(QStringLiteral("%1 needs %2, %3 from %4 to %5")
             .arg(word, QLatin1String(wanted.meaning),
                  isSeconds ? QStringLiteral("a number") : QStringLiteral("a whole number"),
                  QString::number(wanted.min / scale), QString::number(wanted.max / scale, 'g', 8)));
    return std::nullopt;
}

bool Reader::nextIsNumber() const
{
    const QString next = m_words.value(0);
    return !next.isEmpty() && !next.at(0).isLetter();
}

bool Reader::fail(const QString& reason)
{
    m_error = QStringLiteral("fault \"%1\": %2").arg(m_text, reason);
    return false;
}

QString usageOf(const char* name, const Number& number)
{
    if (number.unit == Unit::None)
        return QString::fromLatin1(name);
    const QString form = number.isRequired ? QStringLiteral("%1 %2") : QStringLiteral("%1 [%2]");
    return form.arg(QLatin1String(name), QLatin1String(number.meaning));
}

} // namespace

std::optional<Plan> parse(const QString& text, QString* error)
{
    Reader reader(text);
    std::optional<Plan> plan = reader.read();
    if (!plan)
        *error = reader.error();
    return plan;
}

QString syntax()
{
    QStringList faults;
    for (const FaultRow& row : faultRows)
        faults.append(usageOf(row.name, row.amount));
    QStringList selectors;
    for (const SelectorRow& row : selectorRows)
        selectors.append(usageOf(row.name, row.value));
    selectors << QString(everyWord) << usageOf("for", lifetimeNumber);
    return QStringLiteral("%1; behind it any of: %2")
        .arg(faults.join(QStringLiteral(", ")), selectors.join(QStringLiteral(", ")));
}

} // namespace simulation::faults
