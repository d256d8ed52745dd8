#pragma once

class QString;
class QWidget;

/// Sets a property that the style sheet tells states apart by, and has the sheet look at it again: by itself
/// it looks only when a widget is first shown. GUI thread.
void setStyleProperty(QWidget& widget, const char* name, const QString& value);
