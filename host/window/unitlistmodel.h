#pragma once

#include "unitsummary.h"

#include <QAbstractListModel>
#include <QVector>

class UnitSession;

/// The units with what is known of each, a row for each session. GUI thread.
///
/// A row is brought up to date with each report of its unit, up to ten times a second, and told only when
/// what it shows has changed.
class UnitListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        SummaryRole = Qt::UserRole ///< a UnitSummary
    };

    /// The sessions must outlive the model.
    explicit UnitListModel(const QVector<UnitSession*>& units, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    /// How many units have this tone.
    int count(UnitSummary::Tone tone) const;

private:
    struct Row
    {
        UnitSession* session;
        UnitSummary summary;
    };

    void takeEvent(int row, int type);
    void refresh(int row);

    QVector<Row> m_rows;
};

Q_DECLARE_METATYPE(UnitSummary)
