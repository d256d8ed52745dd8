#pragma once

#include "settingstext.h"

#include <QWidget>

class QComboBox;

/// Speed, parity, data bits and stop bits of a serial line, side by side. What the text asks for is shown as
/// the line will have it; a text that makes no sense leaves the boxes empty.
class LineSettingsRow : public QWidget
{
    Q_OBJECT

public:
    explicit LineSettingsRow(QWidget* parent = nullptr);

    /// Shows a settings text, "9600,n,8,1" or "12#3#0#0".
    void setParam(const QString& param);
    /// The text as it was set, or what was chosen since; empty while something is left to choose.
    QString param() const { return m_param; }

signals:
    /// A person has chosen something.
    void edited();

private:
    QComboBox* addBox(const QString& accessibleName);
    static void choose(QComboBox* box, const QString& part, const QString& text);
    void compose();

    QComboBox* m_speed;
    QComboBox* m_parity;
    QComboBox* m_dataBits;
    QComboBox* m_stopBits;
    QString m_param;
};
