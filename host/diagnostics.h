#pragma once

#include <QString>

/// What the process has to say apart from its output: on standard error, a line each. Any thread.
namespace diagnostics {

/// Sends the debug lines of Qt and the plugin to standard error, or nowhere; warnings always get there.
void install(bool showDebugLines);

/// One line in the name of the program.
void print(const QString& line);

} // namespace diagnostics
