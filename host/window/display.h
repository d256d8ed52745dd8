#pragma once

#include <memory>

class QApplication;

/// The desktop that the window opens on.
namespace display {

/// Makes the application object. Where no display can be opened it says so in one line and ends the process
/// with the exit code of a wrong configuration: Qt itself would end it as if it had crashed.
std::unique_ptr<QApplication> makeApplication(int& argc, char* argv[]);

} // namespace display
