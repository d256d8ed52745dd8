#pragma once

#include "stopsignals.h"

#include <QElapsedTimer>
#include <QObject>

#include <functional>
#include <vector>

class CollectThread;
struct HostOptions;

/// Somebody who uses the host's window: looks for something, does something, and so on, in the order of the
/// calls. What is done may open a box that waits for its answer; the next steps go on meanwhile.
class Person : public QObject
{
    Q_OBJECT

public:
    Person& sees(const char* what, const std::function<bool()>& look);
    Person& does(const std::function<void()>& act);
    /// Looks for a widget of this object name.
    Person& sees(const char* widget);
    // What is done most: one key, a text, another one into a field, clicks on a widget once it is to be seen.
    Person& presses(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    Person& types(const char* text);
    Person& fills(const char* field, const char* text);
    Person& clicks(const char* widget);
    Person& clicksTab(const char* tabs, const char* title);
    Person& quits() { return presses(Qt::Key_Q, Qt::ControlModifier); }

    /// Runs the host with a window to its end and takes the steps; its exit code. When something is not seen
    /// in time, or the host ends before the last step, the test has failed and the host is told to end.
    int use(const HostOptions& options, CollectThread& factory);
    /// As a session does that ends.
    void endSession() { emit m_signals.stopRequested(); }

private:
    struct Step
    {
        const char* what;
        std::function<bool()> look;
        std::function<void()> act;
    };

    void takeStep();

    StopSignals m_signals;
    std::vector<Step> m_steps;
    size_t m_next = 0;
    QElapsedTimer m_sinceStep;
};
