#include "scenariosource.h"

#include "builtinscenarios.h"

#include <QFile>
#include <QStringList>

namespace simulation {

namespace {

constexpr qint64 maxFileBytes = 1 << 20;
constexpr int staggerSteps = 4;

const BuiltinScenario* builtin(const QString& name)
{
    for (const BuiltinScenario& scenario : builtinScenarios)
        if (name == QLatin1String(scenario.name))
            return &scenario;
    return nullptr;
}

} // namespace

std::optional<QByteArray> scenarioText(const QString& nameOrPath, QString* error)
{
    if (const BuiltinScenario* scenario = builtin(nameOrPath))
        return QByteArray(scenario->text);
    QFile file(nameOrPath);
    if (!file.open(QIODevice::ReadOnly)) {
        QStringList names;
        for (const BuiltinScenario& scenario : builtinScenarios)
            names.append(QString::fromLatin1(scenario.name));
        *error = QStringLiteral("cannot read the scenario %1: %2: give a file, or one of %3")
                     .arg(nameOrPath, file.errorString(), names.join(QStringLiteral(", ")));
        return std::nullopt;
    }
    const QByteArray text = file.read(maxFileBytes + 1);
    if (text.size() <= maxFileBytes)
        return text;
    *error =
        QStringLiteral("the scenario %1 is longer than 1 MiB: shorten it, or let it repeat").arg(nameOrPath);
    return std::nullopt;
}

std::int64_t scenarioDelayMs(const QString& nameOrPath, int address)
{
    return builtin(nameOrPath) ? builtinStaggerMs * ((address - 1) % staggerSteps) : 0;
}

} // namespace simulation
