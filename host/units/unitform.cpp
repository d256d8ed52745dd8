#include "unitform.h"

#include "linesettingsrow.h"
#include "portbox.h"
#include "wheelguard.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStyle>

namespace {

constexpr int fieldWidth = 250;
constexpr int portWidth = 490; // names of adapters are long

enum Column
{
    LabelColumn,
    FieldColumn,
    MessageColumn
};

} // namespace

UnitForm::UnitForm(QWidget* parent)
    : QWidget(parent)
    , m_layout(new QGridLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setColumnStretch(MessageColumn, 1);
    m_layout->setVerticalSpacing(6);
    m_name = addText(UnitField::Name, tr("&Name"), QStringLiteral("unitName"));
    addRow(UnitField::Transport, tr("Connection"), makeTransport());
    m_port = new PortBox;
    m_port->setObjectName(QStringLiteral("unitPort"));
    m_port->setFixedWidth(portWidth);
    addRow(UnitField::PortName, tr("Serial &port"), m_port);
    connect(m_port, &QComboBox::editTextChanged, this, &UnitForm::unitEdited);
    m_lineSettings = new LineSettingsRow;
    addRow(UnitField::Line, tr("&Line"), m_lineSettings);
    connect(m_lineSettings, &LineSettingsRow::edited, this, &UnitForm::lineEdited);
    m_timeout = addText(UnitField::TimeoutMs, tr("Time-&out, ms"), QStringLiteral("lineTimeout"));
    m_host = addText(UnitField::Host, tr("&Host"), QStringLiteral("unitHost"));
    m_tcpPort = addText(UnitField::TcpPort, tr("T&CP port"), QStringLiteral("unitTcpPort"));
    m_address = addText(UnitField::Address, tr("Addr&ess"), QStringLiteral("unitAddress"));
    m_retries = addText(UnitField::Retries, tr("Ret&ries"), QStringLiteral("unitRetries"));
    m_interval = addText(UnitField::IntervalS, tr("&Interval, s"), QStringLiteral("unitInterval"));
    m_retries->setToolTip(tr("Failed queries in a row until the unit counts as lost"));
    m_interval->setToolTip(tr("Seconds between queries, for hosts that ask for each one"));
    m_timeout->setToolTip(tr("How long a read waits for the next byte, in steps of 100 ms"));
    disconnect(m_timeout, &QLineEdit::textChanged, this, &UnitForm::unitEdited);
    connect(m_timeout, &QLineEdit::textChanged, this, &UnitForm::lineEdited);
    WheelGuard::guard(*this);
    // The same for both transports, so that nothing moves sideways.
    int labelWidth = 0;
    for (const Row& row : qAsConst(m_rows))
        labelWidth = qMax(labelWidth, row.label->sizeHint().width());
    m_layout->setColumnMinimumWidth(LabelColumn, labelWidth);
    // Fields say that they can do with less than the style sheet gives them.
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QWidget* UnitForm::makeTransport()
{
    auto* widget = new QWidget;
    auto* layout = new QHBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    m_onLine = new QRadioButton(tr("Seri&al line"));
    m_onTcp = new QRadioButton(tr("&Modbus TCP"));
    m_onLine->setObjectName(QStringLiteral("unitOnLine"));
    m_onTcp->setObjectName(QStringLiteral("unitOnTcp"));
    for (QRadioButton* button : {m_onLine, m_onTcp}) {
        layout->addWidget(button);
        connect(button, &QRadioButton::clicked, this, [this] {
            showTransport();
            emit unitEdited();
        });
    }
    layout->addStretch();
    widget->setFocusProxy(m_onLine);
    return widget;
}

void UnitForm::addRow(UnitField field, const QString& caption, QWidget* widget)
{
    auto* label = new QLabel(caption);
    label->setBuddy(widget);
    auto* message = new QLabel;
    message->setTextFormat(Qt::PlainText);
    message->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long one is in the tool tip
    const int row = m_layout->rowCount();
    m_layout->addWidget(label, row, LabelColumn);
    if (field == UnitField::PortName || field == UnitField::Line) {
        // No room for a message beside it.
        m_layout->addWidget(widget, row, FieldColumn, 1, 2, Qt::AlignLeft);
        m_layout->addWidget(message, row + 1, FieldColumn, 1, 2);
    } else {
        widget->setFixedWidth(fieldWidth);
        m_layout->addWidget(widget, row, FieldColumn);
        m_layout->addWidget(message, row, MessageColumn);
    }
    QString plainCaption = caption;
    plainCaption.remove(QLatin1Char('&'));
    widget->setAccessibleName(plainCaption);
    m_rows.insert(field, {label, widget, message, plainCaption});
}

QLineEdit* UnitForm::addText(UnitField field, const QString& caption, const QString& objectName)
{
    auto* edit = new QLineEdit;
    edit->setObjectName(objectName);
    addRow(field, caption, edit);
    connect(edit, &QLineEdit::textChanged, this, &UnitForm::unitEdited);
    return edit;
}

void UnitForm::setUnit(const UnitEntry& unit)
{
    const QSignalBlocker noEdit(this);
    const bool isKnown = unit.isTcp() || unit.commType == QLatin1String("0");
    m_name->setText(unit.name);
    for (QRadioButton* button : {m_onLine, m_onTcp}) {
        button->setAutoExclusive(false); // or none of the two could be shown
        button->setChecked(unit.isTcp() == (button == m_onTcp) && isKnown);
    }
    for (QRadioButton* button : {m_onLine, m_onTcp})
        button->setAutoExclusive(true);
    m_port->setEditText(unit.portName);
    m_host->setText(unit.host);
    m_tcpPort->setText(unit.tcpPort);
    m_address->setText(unit.address);
    m_retries->setText(unit.retries);
    m_interval->setText(unit.intervalS);
    showTransport();
}

void UnitForm::setLine(const LineEntry& line)
{
    const QSignalBlocker noEdit(this);
    m_lineSettings->setParam(line.param);
    if (m_timeout->text() != line.timeoutMs) // the cursor stays where it is
        m_timeout->setText(line.timeoutMs);
}

void UnitForm::readUnit(UnitEntry* unit) const
{
    unit->name = m_name->text().trimmed();
    if (m_onTcp->isChecked() || m_onLine->isChecked())
        unit->commType = m_onTcp->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    unit->portName = m_port->currentText().trimmed();
    unit->host = m_host->text().trimmed();
    unit->tcpPort = m_tcpPort->text().trimmed();
    unit->address = m_address->text().trimmed();
    unit->retries = m_retries->text().trimmed();
    unit->intervalS = m_interval->text().trimmed();
}

LineEntry UnitForm::line() const
{
    return {m_lineSettings->param(), m_timeout->text().trimmed()};
}

void UnitForm::showTransport()
{
    const bool isTcp = m_onTcp->isChecked();
    for (const UnitField field : {UnitField::PortName, UnitField::Line, UnitField::TimeoutMs})
        showRow(field, !isTcp);
    for (const UnitField field : {UnitField::Host, UnitField::TcpPort})
        showRow(field, isTcp);
}

void UnitForm::showRow(UnitField field, bool isShown)
{
    const Row row = m_rows.value(field);
    row.label->setVisible(isShown);
    row.field->setVisible(isShown);
    row.message->setVisible(isShown && !row.message->text().isEmpty());
}

void UnitForm::setErrors(const UnitRules::Errors& errors, const QStringList& unitsOnPort)
{
    for (auto row = m_rows.cbegin(); row != m_rows.cend(); ++row) {
        QString hint;
        if (row.key() == UnitField::PortName)
            hint = m_port->hint();
        else if (row.key() == UnitField::Line && !unitsOnPort.isEmpty())
            hint = tr("Line and time-out hold for the port: for %1 too")
                       .arg(unitsOnPort.join(QStringLiteral(", ")));
        fillMessage(row.key(), errors.value(row.key()), hint);
    }
    showTransport();
    // A wrong number of the other transport could not be seen, and the host refuses it all the same.
    if (errors.contains(UnitField::TcpPort))
        showRow(UnitField::TcpPort, true);
}

void UnitForm::fillMessage(UnitField field, const QString& error, const QString& hint)
{
    const Row row = m_rows.value(field);
    // The style sheet knows the two by these names.
    const QString name = error.isEmpty() ? QStringLiteral("FieldHint") : QStringLiteral("FieldError");
    row.message->setText(error.isEmpty() ? hint : error);
    row.message->setToolTip(row.message->text());
    row.message->setHidden(row.message->text().isEmpty());
    row.field->setAccessibleDescription(row.message->text());
    if (row.message->objectName() == name)
        return;
    row.message->setObjectName(name);
    style()->unpolish(row.message); // so that the sheet is asked again
    style()->polish(row.message);
}

void UnitForm::focusField(UnitField field)
{
    QWidget* widget = m_rows.value(field).field;
    widget->setFocus();
    if (auto* edit = qobject_cast<QLineEdit*>(widget))
        edit->selectAll();
}

QString UnitForm::captionOf(UnitField field) const
{
    return m_rows.value(field).caption;
}
