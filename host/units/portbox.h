#pragma once

#include "serialports.h"

#include <QComboBox>

/// A serial port, typed or chosen from those that the system has at that moment.
class PortBox : public QComboBox
{
    Q_OBJECT

public:
    explicit PortBox(QWidget* parent = nullptr);

    /// What is known of the port that is entered: what hangs on it, or that nothing is there.
    QString hint() const;
    void showPopup() override;

private:
    void refresh();

    QVector<SerialPortName> m_ports;
};
