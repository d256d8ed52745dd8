#include "unitpane.h"

#include "unitsession.h"
#include "unitsummary.h"
#include "veil.h"

#include <QLabel>
#include <QScrollArea>
#include <QTabBar>
#include <QTimer>
#include <QVBoxLayout>

namespace {
constexpr int stepGapMs = 5; // in which whatever waits is handled, painting included
} // namespace

UnitPane::UnitPane(UnitSession& session, const UserLevel& user, int language, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_user(user)
    , m_language(language)
    , m_area(new QScrollArea)
    , m_veil(new Veil(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_area);
    m_area->setObjectName(QStringLiteral("UnitPages"));
    m_area->setAccessibleName(tr("Pages of %1").arg(session.name()));
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    setFocusProxy(m_area);
    m_veil->raise();
    connect(&session, &UnitSession::eventReceived, this, &UnitPane::updateVeil);
    updateVeil();
}

void UnitPane::setUser(const UserLevel& user)
{
    m_user = user;
    if (m_nextStep > Step::TellUser)
        m_pages->setUser(QLatin1String(user.user), user.level);
}

void UnitPane::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_nextStep == Step::Ready)
        m_pages->setShown(true);
    else
        prepare();
}

void UnitPane::hideEvent(QHideEvent* event)
{
    if (m_pages)
        m_pages->setShown(false);
    QWidget::hideEvent(event);
}

void UnitPane::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_veil->setGeometry(rect());
}

void UnitPane::prepare()
{
    QTimer::singleShot(stepGapMs, this, &UnitPane::takeStep);
}

void UnitPane::takeStep()
{
    if (!isVisible() || m_nextStep == Step::Ready)
        return; // goes on when it is shown again
    switch (m_nextStep) {
    case Step::MakePages:
        m_pages = std::make_unique<UnitPages>(m_session);
        m_nextStep = Step::TellUser;
        break;
    case Step::TellUser:
        m_pages->setUser(QLatin1String(m_user.user), m_user.level);
        m_nextStep = Step::PlacePages;
        break;
    case Step::PlacePages:
        placePages();
        m_nextStep = Step::ShowValues;
        break;
    case Step::ShowValues:
    case Step::Ready:
        m_pages->setShown(true);
        m_nextStep = Step::Ready;
        return;
    }
    prepare();
}

void UnitPane::placePages()
{
    if (!m_pages->view()) {
        auto* label = new QLabel(tr("%1 has no pages.").arg(m_session.name()));
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(Qt::AlignCenter);
        m_area->setWidget(label);
        return;
    }
    m_pages->view()->setLanguage(m_language);
    m_area->setWidget(m_pages->view());
    if (auto* tabs = m_pages->view()->findChild<QTabBar*>())
        setFocusProxy(tabs); // it shows that the keyboard is here
    connect(m_pages.get(), &UnitPages::requested, this,
            [this](const QVariantMap& record, bool isSent) { emit requested(&m_session, record, isSent); });
}

void UnitPane::updateVeil()
{
    const UnitState& state = m_session.state();
    const bool isLive = !state.liveData().isEmpty();
    if (!isLive && state.contact() == UnitState::Contact::Lost) {
        const QString since = UnitSummary::sinceText(state.silentSince(), QDate::currentDate());
        m_veil->setTexts(tr("No answer from %1 since %2").arg(m_session.name(), since),
                         tr("Its values come back by themselves as soon as it answers."), true);
    } else if (state.isMissing()) {
        m_veil->setTexts(tr("No answer from %1 since the start").arg(m_session.name()),
                         tr("\"Test\" in the units dialog (Ctrl+U) tells what stands in the way."), true);
    } else if (!isLive) {
        m_veil->setTexts(tr("Waiting for the first answer of %1").arg(m_session.name()),
                         tr("If none comes, \"Test\" in the units dialog (Ctrl+U) tells why."), false);
    }
    m_veil->setVisible(!isLive);
}
