// What a user waits for at the start, each time in a fresh process.

#include "failure.h"
#include "measures.h"
#include "pluginlibrary.h"
#include "processors.h"
#include "results.h"
#include "sampling.h"
#include "workplace.h"

#include <QCoreApplication>
#include <QProcess>

#include <cstdio>

namespace {

QString programBeside(const char* name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name);
}

// The first line that a process prints.
QByteArray firstLineOf(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.start(program, arguments);
    while (!process.canReadLine() && process.waitForReadyRead()) {
    }
    if (!process.canReadLine())
        fail(QStringLiteral("%1 does not start: %2")
                 .arg(program, QString::fromLocal8Bit(process.readAllStandardError())));
    return process.readLine();
}

} // namespace

int loadPluginOnce()
{
    const PluginLibrary* plugin = nullptr;
    const double us =
        timeUs([&] { plugin = new PluginLibrary(QStringLiteral(RUN_DIR "/libvek5m_10-30k_Client.so")); });
    const std::unique_ptr<const PluginLibrary> owner(plugin);
    if (!plugin->factory())
        fail(plugin->error());
    std::printf("%f\n", us);
    return 0;
}

void measureLoad(Results& results)
{
    const OnProcessor here(Role::Client);
    std::vector<double> ms;
    for (int run = 0; run < 31; ++run) {
        QProcess process;
        const QByteArray us =
            firstLineOf(process, QCoreApplication::applicationFilePath(), {QStringLiteral("--load-once")});
        process.waitForFinished();
        ms.push_back(us.toDouble() / 1000);
    }
    results.add({QStringLiteral("load"), QStringLiteral("plugin file to factory object, files cached"),
                 QStringLiteral("ms"), median(ms)});
}

void measureWindow(Results& results)
{
    const Workplace folder;
    writeFile(unitsFile(QCoreApplication::applicationDirPath()),
              "[A]\ncommType=1\nipAddr=127.0.0.1\nport=1\n");
    const OnProcessor here(Role::Client);
    std::vector<double> ms;
    for (int run = 0; run < 11; ++run) {
        QProcess process;
        ms.push_back(timeUs([&] { firstLineOf(process, programBeside("bench_window"), {}); }) / 1000);
        process.waitForFinished();
    }
    results.add({QStringLiteral("window"), QStringLiteral("start of a host to its first painted window"),
                 QStringLiteral("ms"), median(ms)});
}
