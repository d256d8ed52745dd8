#pragma once

#include <QObject>

/// Keeps the wheel from changing choices that nobody opened: whoever scrolls past a list of choices does not
/// mean to choose. GUI thread.
class WheelGuard : public QObject
{
    Q_OBJECT

public:
    /// Guards root, if it is such a list, and those inside it; ends with root.
    static void guard(QWidget& root);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using QObject::QObject;
};
