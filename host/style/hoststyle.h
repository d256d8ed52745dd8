#pragma once

/// How the host's windows look.
namespace hoststyle {

/// Chooses the platform that needs no display, unless the environment names another. Call it before the
/// QApplication is made.
void prepareOffscreen();

/// Gives the QApplication its style, typeface and style sheet, which knows the pages by their object names.
void apply();

} // namespace hoststyle
