#include "lowerarea.h"

#include "styleproperty.h"

#include <QLabel>
#include <QStackedWidget>
#include <QTabBar>
#include <QTime>
#include <QVBoxLayout>

namespace {

QString outcomeName(RequestWatch::Outcome outcome)
{
    switch (outcome) {
    case RequestWatch::Outcome::UnderWay:
        return QStringLiteral("underway");
    case RequestWatch::Outcome::Told:
        return QStringLiteral("told");
    case RequestWatch::Outcome::Done:
        return QStringLiteral("done");
    case RequestWatch::Outcome::Failed:
        break;
    }
    return QStringLiteral("failed");
}

} // namespace

LowerArea::LowerArea(QWidget* parent)
    : QWidget(parent)
    , m_tabs(new QTabBar)
    , m_status(new QLabel)
    , m_contents(new QStackedWidget)
{
    setObjectName(QStringLiteral("LowerArea"));
    m_tabs->setObjectName(QStringLiteral("LowerTabs"));
    m_tabs->setExpanding(false);
    m_status->setObjectName(QStringLiteral("StatusLine"));
    m_status->setTextFormat(Qt::PlainText);
    m_status->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // never widens the window
    auto* header = new QHBoxLayout;
    header->addWidget(m_tabs);
    header->addWidget(m_status, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(header);
    layout->addWidget(m_contents, 1);
    connect(m_tabs, &QTabBar::currentChanged, m_contents, &QStackedWidget::setCurrentIndex);
    connect(m_tabs, &QTabBar::currentChanged, this, &LowerArea::currentChanged);
    setFocusProxy(m_tabs);
    setMinimumHeight(m_status->sizeHint().height());
}

int LowerArea::addTab(QWidget* content, const QString& title)
{
    m_contents->addWidget(content);
    const int tab = m_tabs->addTab(title);
    setMinimumHeight(m_tabs->sizeHint().height());
    return tab;
}

int LowerArea::count() const
{
    return m_tabs->count();
}

int LowerArea::current() const
{
    return m_tabs->currentIndex();
}

void LowerArea::setCurrent(int tab)
{
    m_tabs->setCurrentIndex(tab);
}

void LowerArea::tell(const QString& line, RequestWatch::Outcome outcome)
{
    m_status->setText(QTime::currentTime().toString(QStringLiteral("hh:mm:ss  ")) + line);
    m_status->setToolTip(m_status->text());
    m_status->setAccessibleName(line);
    setStyleProperty(*m_status, "outcome", outcomeName(outcome));
}
