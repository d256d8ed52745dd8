#include "person.h"

#include "collectthread.h"
#include "hostoptions.h"
#include "screen.h"
#include "windowmode.h"

#include <QTimer>
#include <QtTest>

namespace {
constexpr int lookMs = 5;
constexpr int patienceMs = 30000;
} // namespace

Person& Person::sees(const char* what, const std::function<bool()>& look)
{
    m_steps.push_back({what, look, [] {}});
    return *this;
}

Person& Person::sees(const char* widget)
{
    return sees(widget, [widget] { return screen::find<QWidget>(widget) != nullptr; });
}

Person& Person::does(const std::function<void()>& act)
{
    m_steps.push_back({"", [] { return true; }, act});
    return *this;
}

Person& Person::presses(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    return does([=] { screen::key(key, modifiers); });
}

Person& Person::types(const char* text)
{
    return does([text] { screen::type(QLatin1String(text)); });
}

Person& Person::fills(const char* field, const char* text)
{
    return sees(field)
        .does([field] { screen::find<QWidget>(field)->setFocus(); })
        .presses(Qt::Key_A, Qt::ControlModifier)
        .types(text);
}

Person& Person::clicks(const char* widget)
{
    return sees(widget, [widget] { return screen::find<QWidget>(widget) != nullptr; }).does([widget] {
        screen::click(screen::find<QWidget>(widget));
    });
}

Person& Person::clicksTab(const char* tabs, const char* title)
{
    return sees(title, [tabs] { return screen::find<QWidget>(tabs) != nullptr; }).does([=] {
        screen::clickTab(tabs, title);
    });
}

int Person::use(const HostOptions& options, CollectThread& factory)
{
    m_sinceStep.start();
    QTimer::singleShot(0, this, &Person::takeStep);
    const ExitCode code = runWithWindow(options, factory, m_signals);
    if (m_next < m_steps.size() && !QTest::currentTestFailed())
        QTest::qFail(m_steps[m_next].what, "the host has ended before this was seen", 0);
    return static_cast<int>(code);
}

void Person::takeStep()
{
    if (m_next == m_steps.size())
        return;
    const Step& step = m_steps[m_next];
    if (QTest::currentTestFailed()) {
        endSession();
        return;
    }
    const bool isSeen = step.look();
    if (!isSeen && m_sinceStep.hasExpired(patienceMs)) {
        QTest::qFail(qPrintable(QString(QLatin1String(step.what) + QLatin1Char('\n') + screen::describe())),
                     "not seen in time", 0);
        endSession();
        return;
    }
    QTimer::singleShot(lookMs, this, &Person::takeStep); // before the act, which may not return for long
    if (!isSeen)
        return;
    ++m_next;
    m_sinceStep.start();
    step.act();
}
