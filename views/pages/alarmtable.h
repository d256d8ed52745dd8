#pragma once

#include "pagetable.h"

#include <QDateTime>
#include <QMap>
#include <QVariant>

/// When each active alarm was first seen, by alarm index; an alarm that comes back gets a new time.
class AlarmTimes
{
public:
    /// Takes the alarm points of a data map at a moment.
    void take(const QMap<int, QVariant>& data, const QDateTime& now);
    const QMap<int, QDateTime>& active() const { return m_active; }

private:
    QMap<int, QDateTime> m_active;
};

/// The active alarms in the order of their indices, each with the time at which it was first seen.
class AlarmTable : public PageTable
{
    Q_OBJECT

public:
    explicit AlarmTable(QWidget* parent = nullptr);

    /// Shows these alarms with their texts. Rows that stay are not touched, so selection and scroll position
    /// stay as well.
    void showAlarms(const QMap<int, QDateTime>& active, const QStringList& texts);

    /// What the table says while it lists nothing; empty while nothing is known.
    void setPlaceholder(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void removeGone(const QMap<int, QDateTime>& active);
    void insertAlarm(int row, const QDateTime& seen, const QString& text);

    QList<int> m_indices;         // alarm index of each row, ascending
    QMap<int, QDateTime> m_shown; // what the rows say
    QString m_placeholder;
};
