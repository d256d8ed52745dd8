#include "display.h"

#include "diagnostics.h"
#include "exitcode.h"

#include <QApplication>
#include <QPair>
#include <QVector>

#include <cstdlib>

namespace {

// What Qt says while it looks for a display. It tells the reason first and then, at length, what it cannot
// do.
struct Messages
{
    QVector<QPair<QtMsgType, QString>> lines;
};
Messages* heard = nullptr;

[[noreturn]] void endWithoutDisplay()
{
    QString reason;
    for (const auto& line : qAsConst(heard->lines)) {
        if (reason.isEmpty() && line.first == QtWarningMsg)
            reason = QStringLiteral(" (%1)").arg(line.second.trimmed());
    }
    diagnostics::print(
        QStringLiteral("no display to open the window on%1: start it in a desktop session, or with "
                       "--headless")
            .arg(reason));
    std::_Exit(static_cast<int>(ExitCode::Configuration));
}

void hear(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtFatalMsg) // would abort after this returns
        endWithoutDisplay();
    heard->lines.append({type, message});
}

} // namespace

std::unique_ptr<QApplication> display::makeApplication(int& argc, char* argv[])
{
    Messages messages;
    heard = &messages;
    const QtMessageHandler usual = qInstallMessageHandler(hear);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    heard = nullptr;
    for (const auto& line : qAsConst(messages.lines))
        usual(line.first, QMessageLogContext(), line.second);
    return application;
}
