#include "msgbox.h"

#include "framelessbox.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int aloneWidth = 140; // px, of a single button
}

MsgBox::MsgBox(int kind, QString text, QWidget* parent)
    : QDialog(parent)
{
    auto* box = new FramelessBox(this, QSize(300, 150));
    setAccessibleName(text); // a box without a title is announced by what it says
    auto* label = new QLabel(text, this);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(12);
    QPushButton* ok = box->addButton(buttons, tr("Ok"), QStringLiteral("btnBlue"));
    QPushButton* cancel = box->addButton(buttons, tr("Cancel"), QStringLiteral("btnWhite"));
    ok->setDefault(true);
    ok->setFocus();
    cancel->setVisible(kind == question);
    if (kind != question)
        ok->setMaximumWidth(aloneWidth);
    connect(ok, &QPushButton::clicked, this, &MsgBox::okBtn_press);
    connect(cancel, &QPushButton::clicked, this, &MsgBox::cancleBtn_press);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 20);
    layout->setSpacing(20);
    layout->addWidget(label, 1);
    layout->addLayout(buttons);
}

void MsgBox::okBtn_press()
{
    accept();
}

void MsgBox::cancleBtn_press()
{
    reject();
}
