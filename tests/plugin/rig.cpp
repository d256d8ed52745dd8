#include "rig.h"

#include <QJsonDocument>
#include <QtTest>

#include <cstdio>

namespace {

constexpr int startTimeoutMs = 20000;

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

void startIn(QProcess& process, const QString& folder, const QString& program, const QStringList& arguments)
{
    process.setWorkingDirectory(folder);
    process.start(folder + QLatin1Char('/') + program, arguments);
    QVERIFY2(process.waitForStarted(startTimeoutMs), qPrintable(process.errorString()));
}

} // namespace

Rig::Rig()
{
    QDir(m_folder.path()).mkpath(QStringLiteral("PVMX/drovaPanel/db"));
    for (const char* file : {"ups-host", "ups-sim", "libvek5m_10-30k_Client.so", "libvek5m_10-30k.so"})
        QFile::copy(QStringLiteral(RUN_DIR "/") + QLatin1String(file), path(QLatin1String(file)));
}

Rig::~Rig()
{
    if (m_host.state() != QProcess::NotRunning) {
        m_host.kill();
        m_host.waitForFinished();
    }
    for (auto& unit : m_units) {
        unit.second->kill();
        unit.second->waitForFinished();
    }
}

QString Rig::startUnits(const QString& key, const QStringList& arguments)
{
    auto& process = m_units[key];
    process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    startIn(*process, m_folder.path(), QStringLiteral("ups-sim"), arguments);
    while (!process->canReadLine() && process->waitForReadyRead(startTimeoutMs)) {
    }
    return QString::fromUtf8(process->readLine()).trimmed();
}

void Rig::addTransportRows()
{
    QTest::addColumn<QStringList>("transport");
    QTest::addColumn<QString>("config"); // %1 is the TCP port
    QTest::newRow("serial") << QStringList{QStringLiteral("--serial"), QStringLiteral("ttyUPS"),
                                           QStringLiteral("--baud"), QStringLiteral("0")}
                            << QStringLiteral("portName=ttyUPS");
    QTest::newRow("TCP") << QStringList{QStringLiteral("--tcp"), QStringLiteral("0")}
                         << QStringLiteral("commType=1\nipAddr=127.0.0.1\nport=%1");
}

void Rig::startUnitA(const QStringList& transport, const QString& config, const QString& scenario,
                     const QStringList& more)
{
    const QString ready = startUnits(
        QStringLiteral("A"), transport + QStringList{QStringLiteral("--scenario"), scenario,
                                                     QStringLiteral("--trace"), QStringLiteral("trace")});
    const bool isTcp = config.contains(QLatin1Char('%'));
    writeUnits(QStringList(QStringLiteral("[A]")) + more +
               QStringList(isTcp ? config.arg(ready.section(QLatin1Char(':'), -1)) : config));
}

void Rig::killUnits(const QString& key)
{
    m_units[key]->kill();
    m_units[key]->waitForFinished();
    // The link would go on to name a pseudo-terminal that another test may get.
    QFile::remove(path(QStringLiteral("ttyUPS")));
}

void Rig::writeUnits(const QStringList& lines)
{
    writeFile(QStringLiteral("PVMX/drovaPanel/db/dev.ini"), lines.join(QLatin1Char('\n')).toUtf8());
}

void Rig::writeFile(const QString& name, const QByteArray& content)
{
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QString Rig::runHost(const QStringList& arguments, int* exitCode)
{
    startIn(m_host, m_folder.path(), QStringLiteral("ups-host"), arguments);
    const bool hasEnded = m_host.waitForFinished(3 * startTimeoutMs);
    *exitCode = hasEnded && m_host.exitStatus() == QProcess::NormalExit ? m_host.exitCode() : -1;
    readHostErrors();
    return QString::fromUtf8(m_host.readAllStandardOutput());
}

void Rig::startHost(const QStringList& arguments)
{
    m_unread.clear();
    m_events.clear();
    startIn(m_host, m_folder.path(), QStringLiteral("ups-host"),
            QStringList({QStringLiteral("--headless"), QStringLiteral("--json")}) + arguments);
}

void Rig::readHost()
{
    QCoreApplication::processEvents();
    readHostErrors();
    m_unread += m_host.readAllStandardOutput();
    const int end = m_unread.lastIndexOf('\n') + 1;
    m_events += objectsOf(m_unread.left(end));
    m_unread.remove(0, end);
}

// Shown as well: where a test fails they tell why.
void Rig::readHostErrors()
{
    const QByteArray errors = m_host.readAllStandardError();
    std::fwrite(errors.constData(), 1, static_cast<size_t>(errors.size()), stderr);
    m_hostErrors += errors;
}

bool Rig::hasEvent(const QString& unit, int type)
{
    return !events(unit, type).isEmpty();
}

QList<QJsonObject> Rig::events(const QString& unit, int type)
{
    readHost();
    QList<QJsonObject> found;
    for (const QJsonObject& event : m_events) {
        if (event.value(QStringLiteral("unit")).toString() == unit &&
            event.value(QStringLiteral("type")).toInt() == type)
            found << event.value(QStringLiteral("record")).toObject();
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

void Rig::forget()
{
    readHost();
    m_events.clear();
}

QByteArray Rig::hostErrors()
{
    readHostErrors();
    return m_hostErrors;
}

void Rig::killHost()
{
    m_host.kill();
    m_host.waitForFinished(startTimeoutMs);
}

int Rig::stopHost()
{
    m_host.terminate();
    return waitForHost(startTimeoutMs);
}

int Rig::waitForHost(int timeoutMs)
{
    const bool hasEnded = m_host.state() == QProcess::NotRunning || m_host.waitForFinished(timeoutMs);
    readHost();
    return hasEnded && m_host.exitStatus() == QProcess::NormalExit ? m_host.exitCode() : -1;
}

QList<QJsonObject> Rig::trace(const QString& file) const
{
    QFile trace(path(file));
    return trace.open(QIODevice::ReadOnly) ? objectsOf(trace.readAll()) : QList<QJsonObject>();
}
