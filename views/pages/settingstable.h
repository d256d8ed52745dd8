#pragma once

#include "pagetable.h"
#include "parameterinformation.h"

#include <QVariant>

/// One table of settings: caption, present value, range.
class SettingsTable : public PageTable
{
    Q_OBJECT

public:
    explicit SettingsTable(const QString& name, QWidget* parent = nullptr);

    /// Makes a row for each record, with its value text until the first refresh. The records stay the
    /// caller's and must outlive the table.
    void setRecords(const QList<ParameterInformation*>& records);
    /// The record of a row; null for a row that does not exist.
    ParameterInformation* record(int row) const { return m_records.value(row); }
    /// Shows the values of a data map.
    void refresh(const QMap<int, QVariant>& points);
    /// Shows what was last set, until the next refresh.
    void showValueText(const ParameterInformation* record);

private:
    QList<ParameterInformation*> m_records;
};
