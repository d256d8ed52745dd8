#pragma once

#include "collectview.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

class UnitSession;

/// A unit's pages at work: the values of its session go in, what the user asks for goes out to the unit. The
/// session, the pages and this object may end in any order. GUI thread; needs a QApplication.
class UnitPages : public QObject
{
    Q_OBJECT

public:
    /// Makes the pages for a user of a level: 0 views, 1 operates, 2 sets everything.
    UnitPages(UnitSession& session, const QString& user, int level, QObject* parent = nullptr);

    /// The pages, which the unit's collector deletes unless a host's widget did before; null when the unit
    /// has none or they are gone.
    CollectView* view() const { return m_view; }

private:
    void takeEvent(UnitSession& session, int type, const QVariantMap& record);

    QPointer<CollectView> m_view;
};
