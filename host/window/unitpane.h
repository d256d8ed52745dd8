#pragma once

#include "unitpages.h"

#include <QWidget>

#include <memory>

class QScrollArea;
class UnitSession;
class Veil;

/// Who is at the screen, as a unit's pages take it.
struct UserLevel
{
    const char* title; ///< translated in the window's context
    const char* user;
    int level;
};

/// The place of one unit in the window: its pages, which scroll where they need more room, dimmed while
/// their values are not live. The pages are made when the place is first shown, in steps between which other
/// events are handled: as a whole they would hold them up noticeably. GUI thread.
class UnitPane : public QWidget
{
    Q_OBJECT

public:
    /// language is the host's number of its language. The session must outlive the pane.
    UnitPane(UnitSession& session, const UserLevel& user, int language, QWidget* parent = nullptr);

    void setUser(const UserLevel& user);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

signals:
    /// As UnitPages has it, with the unit that it is about.
    void requested(UnitSession* session, const QVariantMap& record, bool isSent);

private:
    enum class Step
    {
        MakePages,
        TellUser,
        PlacePages,
        ShowValues,
        Ready
    };

    void prepare();
    void takeStep();
    void placePages();
    void updateVeil();

    UnitSession& m_session;
    UserLevel m_user;
    const int m_language;
    Step m_nextStep = Step::MakePages;
    std::unique_ptr<UnitPages> m_pages;
    QScrollArea* m_area;
    Veil* m_veil;
};
