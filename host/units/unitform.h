#pragma once

#include "unitrules.h"

#include <QWidget>

class LineSettingsRow;
class PortBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QRadioButton;

/// One unit's settings and those of its serial port, each with a line for what is wrong with it.
class UnitForm : public QWidget
{
    Q_OBJECT

public:
    explicit UnitForm(QWidget* parent = nullptr);

    /// Shows a unit; no edited() is sent for it.
    void setUnit(const UnitEntry& unit);
    /// Shows the settings of the unit's port.
    void setLine(const LineEntry& line);
    /// Takes what is entered over into a unit.
    void readUnit(UnitEntry* unit) const;
    LineEntry line() const;

    /// Shows what is wrong, and the other units that the port's settings hold for.
    void setErrors(const UnitRules::Errors& errors, const QStringList& unitsOnPort);
    void focusField(UnitField field);
    /// What a field is called.
    QString captionOf(UnitField field) const;

signals:
    /// A person has changed something of the unit.
    void unitEdited();
    /// A person has changed something of the unit's port.
    void lineEdited();

private:
    /// A row of the form.
    struct Row
    {
        QWidget* label;
        QWidget* field;
        QLabel* message;
        QString caption;
    };

    void addRow(UnitField field, const QString& caption, QWidget* widget);
    QLineEdit* addText(UnitField field, const QString& caption, const QString& objectName);
    QWidget* makeTransport();
    void fillMessage(UnitField field, const QString& error, const QString& hint);
    void showTransport();
    void showRow(UnitField field, bool isShown);

    QGridLayout* m_layout;
    QMap<UnitField, Row> m_rows;
    QRadioButton* m_onLine;
    QRadioButton* m_onTcp;
    QLineEdit* m_name;
    PortBox* m_port;
    LineSettingsRow* m_lineSettings;
    QLineEdit* m_timeout;
    QLineEdit* m_host;
    QLineEdit* m_tcpPort;
    QLineEdit* m_address;
    QLineEdit* m_retries;
    QLineEdit* m_interval;
};
