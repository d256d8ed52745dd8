#include "wheelguard.h"

#include <QComboBox>
#include <QEvent>

void WheelGuard::guard(QWidget& root)
{
    auto* filter = new WheelGuard(&root);
    QList<QComboBox*> boxes = root.findChildren<QComboBox*>();
    if (auto* box = qobject_cast<QComboBox*>(&root))
        boxes += box;
    for (QComboBox* box : qAsConst(boxes))
        box->installEventFilter(filter);
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return QObject::eventFilter(watched, event);
    event->ignore(); // what lies around it may scroll
    return true;
}
