#pragma once

#include <QDialog>

/// A small frameless box with a text: a question, answered by Ok or Cancel, or a notice. Run it with exec(),
/// which returns 1 (QDialog::Accepted) for Ok.
class MsgBox : public QDialog
{
    Q_OBJECT

public:
    enum Kind
    {
        notice = 0,
        question = 1
    };

    /// Any kind but a question is a notice. The text is plain text.
    MsgBox(int kind, QString text, QWidget* parent = nullptr);

public slots:
    void okBtn_press();
    void cancleBtn_press();
};
