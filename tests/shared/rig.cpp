#include "rig.h"

#include "columns.h"
#include "testfiles.h"

#include <QJsonDocument>

#include <cstdio>

namespace {

QList<QJsonObject> objectsOf(const QByteArray& lines)
{
    QList<QJsonObject> objects;
    for (const QByteArray& line : lines.split('\n')) {
        const QJsonDocument document = QJsonDocument::fromJson(line);
        if (document.isObject())
            objects << document.object();
    }
    return objects;
}

} // namespace

int typeOf(const QJsonObject& event)
{
    return event.value(QStringLiteral("type")).toInt();
}

QJsonObject recordOf(const QJsonObject& event)
{
    return event.value(QStringLiteral("record")).toObject();
}

Rig::Rig()
{
    QDir(m_folder.path()).mkpath(QStringLiteral("PVMX/drovaPanel/db"));
    for (const char* file : {"ups-host", "libvek5m_10-30k_Client.so", "libvek5m_10-30k.so"})
        QFile::copy(QStringLiteral(RUN_DIR "/") + QLatin1String(file), path(QLatin1String(file)));
}

Rig::~Rig()
{
    killHost();
}

int Rig::startUnits(const Text& key, const QStringList& arguments)
{
    auto& units = m_units[key];
    units = std::make_unique<Simulator>(arguments, m_folder.path());
    if (!units->waitReady("\n"))
        QTest::qFail(units->errors(), __FILE__, __LINE__);
    return units->port();
}

void Rig::addTransportRows()
{
    const auto row = columns<QString, QString>("transport", "config"); // %1 is the TCP port
    row("serial", "--serial ttyUPS --baud 0", "portName=ttyUPS");
    row("TCP", "--tcp 0", "commType=1\nipAddr=127.0.0.1\nport=%1");
}

void Rig::startUnitA(const Text& transport, const Text& config, const Text& scenario, const Text& more,
                     const QStringList& options)
{
    const QString arguments = transport + QStringLiteral(" --trace trace --scenario ") + scenario;
    const int port = startUnits(QStringLiteral("A"), words(arguments) + options);
    writeUnits(QStringLiteral("[A]\n") + more + QLatin1Char('\n') +
               QString(config).replace(QLatin1String("%1"), QString::number(port)));
}

void Rig::startSerialUnitA(const Text& scenario, const Text& more)
{
    startUnitA(QStringLiteral("--serial ttyUPS --baud 0"), QStringLiteral("portName=ttyUPS"), scenario, more);
}

void Rig::writeUnits(const Text& text)
{
    write(QStringLiteral("PVMX/drovaPanel/db/dev.ini"), text.toUtf8());
}

void Rig::write(const Text& name, const QByteArray& content)
{
    writeFile(path(name), content);
}

void Rig::start(const QStringList& arguments)
{
    m_host.setWorkingDirectory(m_folder.path());
    m_host.start(path(QStringLiteral("ups-host")), arguments);
    QVERIFY2(m_host.waitForStarted(patienceMs), qPrintable(m_host.errorString()));
}

QString Rig::runHost(const QStringList& arguments, int* exitCode)
{
    start(arguments);
    const bool hasEnded = m_host.waitForFinished(waitMs);
    *exitCode = hasEnded && m_host.exitStatus() == QProcess::NormalExit ? m_host.exitCode() : -1;
    return QString::fromUtf8(m_host.readAllStandardOutput());
}

void Rig::startHost(const QStringList& arguments)
{
    m_unread.clear();
    m_events.clear();
    start(QStringList({QStringLiteral("--headless"), QStringLiteral("--json")}) + arguments);
}

void Rig::readHost()
{
    QCoreApplication::processEvents();
    // Shown as well: where a test fails they tell why.
    const QByteArray errors = m_host.readAllStandardError();
    std::fwrite(errors.constData(), 1, static_cast<size_t>(errors.size()), stderr);
    m_hostErrors += errors;
    m_unread += m_host.readAllStandardOutput();
    const int end = m_unread.lastIndexOf('\n') + 1;
    m_events += objectsOf(m_unread.left(end));
    m_unread.remove(0, end);
}

QList<QJsonObject> Rig::events(const Text& unit, int type)
{
    readHost();
    QList<QJsonObject> found;
    for (const QJsonObject& event : m_events) {
        if (event.value(QStringLiteral("unit")).toString() == unit && typeOf(event) == type)
            found << recordOf(event);
    }
    return found;
}

QList<QJsonObject> Rig::takeEvents()
{
    readHost();
    QList<QJsonObject> events;
    events.swap(m_events);
    return events;
}

QByteArray Rig::hostErrors()
{
    readHost();
    return m_hostErrors;
}

void Rig::signalHost(int number)
{
    ::kill(pid_t(m_host.processId()), number);
}

void Rig::killHost()
{
    m_host.kill();
    m_host.waitForFinished(patienceMs);
}

int Rig::stopHost()
{
    m_host.terminate();
    return waitForHost(patienceMs);
}

int Rig::waitForHost(int timeoutMs)
{
    const bool hasEnded = m_host.state() == QProcess::NotRunning || m_host.waitForFinished(timeoutMs);
    readHost();
    return hasEnded && m_host.exitStatus() == QProcess::NormalExit ? m_host.exitCode() : -1;
}

QList<QJsonObject> Rig::trace(const Text& file) const
{
    return objectsOf(contentOf(path(file)));
}
