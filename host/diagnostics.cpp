#include "diagnostics.h"

#include <QtGlobal>

#include <atomic>
#include <cstdio>

namespace {

std::atomic<bool> showDebug{false};

void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if ((type == QtDebugMsg || type == QtInfoMsg) && !showDebug)
        return;
    // What Qt says of every window where there is no screen, and of every program outside a user's session.
    if (!showDebug && (message.startsWith(QLatin1String("This plugin does not support")) ||
                       message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"))))
        return;
    std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
}

} // namespace

void diagnostics::install(bool showDebugLines)
{
    showDebug = showDebugLines;
    qInstallMessageHandler(handleMessage);
}

void diagnostics::print(const QString& line)
{
    std::fprintf(stderr, "ups-host: %s\n", line.toLocal8Bit().constData());
}
