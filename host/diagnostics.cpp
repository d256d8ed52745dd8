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
