#include "veil.h"

#include "styleproperty.h"

#include <QFrame>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace {
const QColor dimming(238, 240, 247, 222); // so dense that nothing below can be taken for a value
const QColor solid(238, 240, 247);
constexpr int cardWidth = 440;
} // namespace

Veil::Veil(QWidget* parent, Ground ground)
    : QWidget(parent)
    , m_ground(ground)
    , m_title(new QLabel)
    , m_details(new QLabel)
{
    setObjectName(QStringLiteral("Veil"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* card = new QFrame;
    card->setObjectName(QStringLiteral("VeilCard"));
    card->setMaximumWidth(cardWidth);
    m_title->setObjectName(QStringLiteral("VeilTitle"));
    m_details->setObjectName(QStringLiteral("VeilDetails"));
    auto* lines = new QVBoxLayout(card);
    lines->setContentsMargins(24, 18, 24, 18);
    for (QLabel* label : {m_title, m_details}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignCenter);
        lines->addWidget(label);
    }
    auto* layout = new QGridLayout(this);
    layout->addWidget(card, 1, 1);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 2);
    layout->setColumnStretch(2, 1);
    layout->setRowStretch(0, 1);
    layout->setRowStretch(2, 1);
}

void Veil::setTexts(const QString& title, const QString& details, bool isWarning)
{
    if (title == m_title->text())
        return;
    m_title->setText(title);
    m_details->setText(details);
    setAccessibleName(title + QLatin1Char(' ') + details);
    setStyleProperty(*m_title, "tone", isWarning ? QStringLiteral("warning") : QString());
}

void Veil::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), m_ground == Ground::Solid ? solid : dimming);
}
