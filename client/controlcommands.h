#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// One command that waits for the next cycle.
struct ControlCmd
{
    int id;        ///< command id as the host passes it to control()
    QString value; ///< argument text
};

/// What each command id stands for and what text it sends to the driver.
namespace controlcommands {

enum Id
{
    ClosePort = 1018,
    DownloadHistory = 1045,
    RawText = 2016
};

/// Longest text that a driver takes, without the terminating zero.
constexpr int maxTextLength = 49;

/// The driver's text for a command, cut at maxTextLength bytes; nothing for an id that sends nothing.
std::optional<QByteArray> driverText(const ControlCmd& command);

/// The source text of a command's name, in the context vek5Client; empty for an id without a name.
const char* nameOf(int id);

} // namespace controlcommands
