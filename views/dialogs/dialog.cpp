#include "dialog.h"

#include "displaytext.h"
#include "framelessbox.h"
#include "loading.h"
#include "msgbox.h"
#include "settingentry.h"

#include <QComboBox>
#include <QDateTime>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

constexpr int settingConfirmed = 1029; // event type of a setting
constexpr int setCommand = 2016;       // command that sets a point
constexpr int checkedCloseMs = 1000;
constexpr int uncheckedCloseMs = 2000;

QLabel* plainLabel(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QString rangeText(const ParameterInformation& record)
{
    const QChar separator = QLatin1Char('~');
    const QString limits = displaytext::limits(record, separator);
    if (limits.isEmpty())
        return {};
    return Dialog::tr("Range:%1~%2").arg(limits.section(separator, 0, 0), limits.section(separator, 1));
}

QString firstValue(const ParameterInformation& record)
{
    if (record.pointId == systemTimePoint)
        return QDateTime::currentDateTime().toString(QStringLiteral("yyyy/MM/dd hh:mm:ss"));
    return record.valueText;
}

} // namespace

Dialog::Dialog(QWidget* parent)
    : QDialog(parent)
    , m_box(new FramelessBox(this, QSize(300, 170)))
    , m_title(plainLabel(this))
    , m_range(plainLabel(this))
    , m_valueUnit(plainLabel(this))
    , m_optionUnit(plainLabel(this))
    , m_value(new QLineEdit(this))
    , m_options(new QComboBox(this))
    , m_loading(new Loading(this))
    , m_pages(new QStackedWidget(this))
{
    m_options->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_pages->addWidget(entryPage(tr("Value:"), m_value, m_valueUnit));
    m_pages->addWidget(entryPage(tr("Option:"), m_options, m_optionUnit));
    m_pages->addWidget(m_loading);
    buildLayout();
    m_closeTimer.setSingleShot(true);
    connect(&m_closeTimer, &QTimer::timeout, this, &Dialog::accept);
    initial(nullptr);
}

QWidget* Dialog::entryPage(const QString& caption, QWidget* entry, QLabel* unit)
{
    auto* page = new QWidget(m_pages);
    auto* label = new QLabel(caption, page);
    label->setBuddy(entry);
    auto* row = new QHBoxLayout(page);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(10);
    row->addWidget(label);
    row->addWidget(entry, 1);
    row->addWidget(unit);
    return page;
}

void Dialog::buildLayout()
{
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_title->setObjectName(QStringLiteral("DialogTitle"));
    m_range->setObjectName(QStringLiteral("DialogRange"));
    m_title->setWordWrap(true);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(12);
    m_ok = m_box->addButton(buttons, tr("Ok"), QStringLiteral("btnBlue"));
    QPushButton* cancel = m_box->addButton(buttons, tr("Cancel"), QStringLiteral("btnWhite"));
    m_ok->setDefault(true);
    connect(m_ok, &QPushButton::clicked, this, &Dialog::checkRange);
    connect(cancel, &QPushButton::clicked, this, &Dialog::close);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(4);
    layout->addWidget(m_title);
    layout->addWidget(m_range);
    layout->addSpacing(8);
    layout->addWidget(m_pages, 1);
    layout->addSpacing(8);
    layout->addLayout(buttons);
}

void Dialog::initial(ParameterInformation* record)
{
    static const ParameterInformation nothing;
    const ParameterInformation& shown = record ? *record : nothing;
    m_closeTimer.stop();
    m_record = record;
    m_isBusy = false;
    m_ok->setEnabled(record != nullptr);

    setWindowTitle(shown.label);
    m_title->setText(shown.label);
    m_range->setText(rangeText(shown));
    m_range->setVisible(shown.hasRange());
    for (QLabel* unit : {m_valueUnit, m_optionUnit}) {
        unit->setText(shown.unit);
        unit->setVisible(!shown.unit.isEmpty());
    }
    for (QWidget* entry : {static_cast<QWidget*>(m_value), static_cast<QWidget*>(m_options)})
        entry->setAccessibleName(shown.label);

    m_value->setText(firstValue(shown));
    m_options->clear();
    for (auto option = shown.comboMap.begin(); option != shown.comboMap.end(); ++option)
        m_options->addItem(option.key(), option.value());
    switchPage(isOptionMode() ? optionPage : valuePage);
    focusEntry();
    m_box->fit();
    if (isVisible()) { // the page below has just been clicked
        raise();
        activateWindow();
    }
}

void Dialog::setPresentValue(int value)
{
    const int index = m_options->findData(value);
    if (index >= 0)
        m_options->setCurrentIndex(index);
}

void Dialog::setDevName(QString name)
{
    m_deviceName = name;
}

void Dialog::switchPage(int index)
{
    m_pages->setCurrentIndex(index);
}

QString Dialog::getstrValue() const
{
    return isOptionMode() ? m_options->currentText() : m_value->text();
}

int Dialog::getrealValue() const
{
    const float ratio = m_record ? m_record->ratio : 0;
    if (isOptionMode())
        return settingentry::rawFromOption(getstrValue(), m_options->currentData().toInt(), ratio);
    return settingentry::rawFromText(getstrValue(), ratio);
}

void Dialog::checkRange()
{
    if (!m_record || m_isBusy)
        return;
    const int rawValue = getrealValue();
    if (!settingentry::isAllowed(*m_record, rawValue)) {
        refuseEntry();
        return;
    }
    const int closeMs = m_record->hasRange() ? checkedCloseMs : uncheckedCloseMs;
    showBusy();
    const QString entry = getstrValue();
    if (!entry.isEmpty())
        m_record->valueText = entry;

    const QPointer<Dialog> self = this;
    emit postDEvent(settingConfirmed, request(rawValue));
    if (self && m_isBusy) // else the receiver deleted or closed the dialog, or gave it another record
        m_closeTimer.start(closeMs);
}

void Dialog::done(int result)
{
    m_closeTimer.stop();
    m_isBusy = false;
    QDialog::done(result);
}

bool Dialog::isOptionMode() const
{
    return m_options->count() > 0;
}

void Dialog::focusEntry()
{
    QWidget* entry = isOptionMode() ? static_cast<QWidget*>(m_options) : m_value;
    entry->setFocus();
    m_value->selectAll();
}

void Dialog::refuseEntry()
{
    const QPointer<Dialog> self = this;
    const QPointer<MsgBox> box = new MsgBox(MsgBox::notice, tr("The value is out of range!"), this);
    box->exec();
    delete box; // null if the dialog went away meanwhile, and the box with it
    if (self)
        focusEntry();
}

void Dialog::showBusy()
{
    m_isBusy = true;
    switchPage(busyPage);
    m_ok->setEnabled(false);
    m_loading->setFocus(); // not on Cancel, where an Enter key held down would close the dialog
}

QMap<QString, QVariant> Dialog::request(int rawValue) const
{
    const QString node = settingentry::nodeText(*m_record, getstrValue());
    QMap<QString, QVariant> result;
    result.insert(QStringLiteral("controlId"), setCommand);
    result.insert(QStringLiteral("controlValue"), settingentry::requestValue(*m_record, node, rawValue));
    result.insert(QStringLiteral("nodeValue"), node);
    result.insert(QStringLiteral("nodeName"), m_record->label);
    result.insert(QStringLiteral("name"), m_deviceName);
    return result;
}
