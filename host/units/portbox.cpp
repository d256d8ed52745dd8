#include "portbox.h"

#include <QFileInfo>
#include <QSignalBlocker>

PortBox::PortBox(QWidget* parent)
    : QComboBox(parent)
{
    setEditable(true);
    setCompleter(nullptr); // it would make ttyUSB10 of a typed ttyUSB1
    setInsertPolicy(QComboBox::NoInsert);
    refresh();
}

QString PortBox::hint() const
{
    const QString port = currentText();
    for (const SerialPortName& known : m_ports) {
        if (known.path == port)
            return known.description;
    }
    return port.isEmpty() || QFileInfo::exists(port) ? QString() : tr("Not there at the moment");
}

void PortBox::showPopup()
{
    refresh();
    QComboBox::showPopup();
}

void PortBox::refresh()
{
    const QSignalBlocker noEdit(this);
    const QString entered = currentText();
    m_ports = serialports::list();
    clear();
    for (const SerialPortName& port : qAsConst(m_ports)) {
        addItem(port.path);
        setItemData(count() - 1, port.description, Qt::ToolTipRole);
    }
    setCurrentIndex(findText(entered));
    setEditText(entered);
}
