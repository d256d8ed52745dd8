#pragma once

#include "collectview.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

class UnitSession;

/// A unit's pages at work: the values of its session go in while they are shown, what the user asks for goes
/// out to the unit. The session, the pages and this object may end in any order. GUI thread; needs a
/// QApplication.
class UnitPages : public QObject
{
    Q_OBJECT

public:
    /// Makes the pages, which takes some ten milliseconds.
    explicit UnitPages(UnitSession& session, QObject* parent = nullptr);

    /// The pages, which the unit's collector deletes unless a host's widget did before; null when the unit
    /// has none or they are gone.
    CollectView* view() const { return m_view; }

    /// Says who is at the screen: level 0 views, 1 operates, 2 sets everything.
    void setUser(const QString& user, int level);
    /// Pages get values while they are shown, the present ones at once; they are not at first.
    void setShown(bool isShown);

signals:
    /// The user asked the unit for something. isSent is false when the unit does not answer: what is kept for
    /// a silent unit could reach it when nobody expects it any more.
    void requested(const QVariantMap& record, bool isSent);

private:
    void takeEvent(int type, const QVariantMap& record);
    void showValues();
    void forward(const QVariantMap& record);

    QPointer<UnitSession> m_session;
    QPointer<CollectView> m_view;
    bool m_isShown = false;
    bool m_hasLiveValues = false; ///< the pages, at present
};
