// A host that starts as ups-host does with a window, says when that is painted for the first time, and ends.

#include "collectthread.h"
#include "hoststyle.h"
#include "mainwindow.h"
#include "pluginlibrary.h"
#include "stopsignals.h"
#include "unitrun.h"
#include "windowrunner.h"

#include <QApplication>
#include <QEvent>

#include <cstdio>

namespace {

class FirstPaint : public QObject
{
public:
    explicit FirstPaint(WindowRunner& runner)
        : QObject(&runner)
        , m_runner(runner)
    {
        runner.window().installEventFilter(this);
    }

    bool eventFilter(QObject* window, QEvent* event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        window->removeEventFilter(this);
        // The window's parts are painted right after it, before the event loop goes on.
        QTimer::singleShot(0, &m_runner, [this] {
            std::printf("painted\n");
            std::fflush(stdout);
            m_runner.stop();
        });
        return false;
    }

private:
    WindowRunner& m_runner;
};

} // namespace

int main(int argc, char* argv[])
{
    hoststyle::prepareOffscreen();
    const QApplication application(argc, argv);
    hoststyle::apply();
    const PluginLibrary plugin(QStringLiteral(RUN_DIR "/libvek5m_10-30k_Client.so"));
    if (!plugin.factory()) {
        std::fprintf(stderr, "bench_window: %s\n", qPrintable(plugin.error()));
        return 1;
    }
    const StopSignals signalWatch;
    HostOptions options;
    options.choicesFile = QStringLiteral("window.ini");
    const auto watch = [](WindowRunner& runner) { new FirstPaint(runner); };
    runUnits(options, {QStringLiteral("A")}, *plugin.factory(), signalWatch, watch);
    return 0;
}
