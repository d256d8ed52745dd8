#include "styleproperty.h"

#include <QStyle>
#include <QVariant>
#include <QWidget>

void setStyleProperty(QWidget& widget, const char* name, const QString& value)
{
    widget.setProperty(name, value);
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
}
