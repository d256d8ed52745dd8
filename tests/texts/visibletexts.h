#pragma once

#include <QStringList>

class QWidget;

/// What people can read of a window, or are told of it: texts of the widgets in it, hidden ones too, of
/// lists, tables and menus, and whatever is painted.
QStringList visibleTexts(QWidget& window);
