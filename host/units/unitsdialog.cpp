#include "unitsdialog.h"

#include "checkthread.h"
#include "serialports.h"
#include "testpanel.h"
#include "unitform.h"
#include "unitrules.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTableWidget>

namespace {

constexpr QSize initialSize(1080, 640);
constexpr int listWidth = 360;
constexpr QRgb danger = qRgb(0xb3, 0x26, 0x1e); // the style sheet's

enum Column
{
    NameColumn,
    PlaceColumn,
    ColumnCount
};

QString placeOf(const UnitEntry& unit)
{
    const QString place = unit.isTcp() ? QString(unit.host + QLatin1Char(':') + unit.tcpPort) : unit.portName;
    return place + QStringLiteral(" · ") + unit.address;
}

QLabel* makeLine(const char* name)
{
    auto* label = new QLabel;
    label->setObjectName(QLatin1String(name));
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

UnitsDialog::UnitsDialog(const QString& devIniFile, const QString& serialIniFile, QWidget* parent)
    : QDialog(parent)
    , m_files(devIniFile, serialIniFile)
    , m_notice(makeLine("UnitsNotice"))
    , m_problem(makeLine("UnitsProblem"))
{
    setObjectName(QStringLiteral("UnitsDialog"));
    setWindowTitle(tr("Units") + QStringLiteral("[*]"));
    auto* middle = new QHBoxLayout;
    middle->setSpacing(20);
    middle->addWidget(makeList());
    middle->addWidget(makeUnitSide(), 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->setSpacing(12);
    layout->addWidget(m_notice);
    layout->addWidget(m_problem);
    layout->addLayout(middle, 1);
    layout->addWidget(makeButtons());
    resize(initialSize);
    m_notice->hide();
    load();
}

UnitsDialog::~UnitsDialog() = default;

QWidget* UnitsDialog::makeList()
{
    auto* side = new QWidget;
    side->setFixedWidth(listWidth);
    m_table = new QTableWidget(0, ColumnCount);
    m_table->setObjectName(QStringLiteral("UnitsTable"));
    m_table->setAccessibleName(tr("Units"));
    m_table->setHorizontalHeaderLabels({tr("Unit"), tr("Connection and address")});
    m_table->horizontalHeader()->setSectionResizeMode(PlaceColumn, QHeaderView::Stretch);
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->verticalHeader()->hide();
    m_table->setShowGrid(false);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setTabKeyNavigation(false); // Tab goes on to the buttons
    m_table->setColumnWidth(NameColumn, listWidth * 2 / 5);
    m_add = new QPushButton(tr("A&dd"));
    m_remove = new QPushButton(tr("Remo&ve"));
    m_add->setObjectName(QStringLiteral("addUnit"));
    m_remove->setObjectName(QStringLiteral("removeUnit"));
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table, 1);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {m_add, m_remove}) {
        button->setAutoDefault(false);
        buttons->addWidget(button);
    }
    buttons->addStretch();
    layout->addLayout(buttons);
    connect(m_table, &QTableWidget::currentCellChanged, this, &UnitsDialog::showUnit);
    connect(m_add, &QPushButton::clicked, this, &UnitsDialog::addUnit);
    connect(m_remove, &QPushButton::clicked, this, &UnitsDialog::removeUnit);
    auto* removeKey = new QShortcut(QKeySequence::Delete, m_table, nullptr, nullptr, Qt::WidgetShortcut);
    connect(removeKey, &QShortcut::activated, m_remove, &QPushButton::click);
    return side;
}

QWidget* UnitsDialog::makeUnitSide()
{
    m_unitSide = new QWidget;
    m_form = new UnitForm;
    m_warnings = new QLabel;
    m_warnings->setObjectName(QStringLiteral("FieldWarning"));
    m_warnings->setWordWrap(true);
    m_warnings->setTextFormat(Qt::PlainText);
    m_test = new TestPanel;
    auto* layout = new QVBoxLayout(m_unitSide);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    layout->addWidget(m_form);
    layout->addWidget(m_warnings);
    layout->addWidget(m_test, 1);
    connect(m_form, &UnitForm::unitEdited, this, &UnitsDialog::takeUnit);
    connect(m_form, &UnitForm::lineEdited, this, &UnitsDialog::takeLine);
    connect(m_test, &TestPanel::startRequested, this, &UnitsDialog::testUnit);
    connect(m_test, &TestPanel::ended, this, &UnitsDialog::showFindings);
    connect(m_test, &TestPanel::ended, this, &UnitsDialog::testEnded);
    return m_unitSide;
}

QDialogButtonBox* UnitsDialog::makeButtons()
{
    auto* buttons = new QDialogButtonBox;
    m_readAgain = buttons->addButton(tr("Read a&gain"), QDialogButtonBox::ResetRole);
    m_readAgain->setObjectName(QStringLiteral("readAgain"));
    m_save = buttons->addButton(tr("&Save"), QDialogButtonBox::AcceptRole);
    m_save->setObjectName(QStringLiteral("btnBlue")); // as the pages call the button that does it
    auto* cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    for (QPushButton* button : {m_readAgain, m_save, cancel})
        button->setAutoDefault(false); // Enter is for one of them, wherever the focus is
    connect(m_readAgain, &QPushButton::clicked, this, &UnitsDialog::load);
    connect(buttons, &QDialogButtonBox::accepted, this, &UnitsDialog::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &UnitsDialog::reject);
    return buttons;
}

void UnitsDialog::load()
{
    const QString error = m_files.load();
    m_isEditable = error.isEmpty();
    m_config = m_files.stored();
    setWindowModified(false);
    {
        const QSignalBlocker noSelection(m_table);
        m_table->setRowCount(m_config.units.size());
        for (int row = 0; row < m_config.units.size(); ++row)
            showRow(row);
    }
    showProblem(error);
    m_readAgain->setVisible(!m_isEditable);
    (m_isEditable ? m_save : m_readAgain)->setDefault(true);
    m_table->setCurrentCell(m_config.units.isEmpty() ? -1 : 0, 0);
    showUnit();
    QWidget* const start = m_config.units.isEmpty() ? static_cast<QWidget*>(m_add) : m_table;
    (m_isEditable ? start : m_readAgain)->setFocus();
}

int UnitsDialog::current() const
{
    return m_table->currentRow();
}

void UnitsDialog::showUnit()
{
    const UnitEntry unit = current() >= 0 ? m_config.units[current()] : UnitEntry();
    m_form->setUnit(unit);
    m_form->setLine(m_config.lines.value(unitentry::lineSection(unit.portName)));
    showFindings();
}

void UnitsDialog::takeUnit()
{
    if (current() < 0)
        return;
    UnitEntry& unit = m_config.units[current()];
    m_form->readUnit(&unit);
    // Another port has settings of its own.
    m_form->setLine(m_config.lines.value(unitentry::lineSection(unit.portName)));
    setChanged();
}

void UnitsDialog::takeLine()
{
    if (current() < 0)
        return;
    m_config.lines.insert(unitentry::lineSection(m_config.units[current()].portName), m_form->line());
    setChanged();
}

void UnitsDialog::setChanged()
{
    setWindowModified(true);
    showProblem({});
    showFindings();
}

// Whether a unit is right depends on the others as well: all rows are looked at.
void UnitsDialog::showFindings()
{
    for (int row = 0; row < m_config.units.size(); ++row)
        showRow(row);
    const bool isUnit = current() >= 0;
    m_unitSide->setEnabled(isUnit && m_isEditable);
    m_add->setEnabled(m_isEditable);
    m_remove->setEnabled(isUnit && m_isEditable);
    // Units that are made anew would wait for the test's port.
    m_save->setEnabled(m_isEditable && !m_test->isRunning());
    QStringList warnings;
    if (isUnit) {
        m_form->setErrors(UnitRules::errors(m_config, current()),
                          UnitRules::unitsOnPort(m_config, current()));
        warnings = UnitRules::warnings(m_config, current(), serialports::deviceOf);
    }
    m_warnings->setText(warnings.join(QLatin1Char('\n')));
    m_warnings->setVisible(!warnings.isEmpty());
}

void UnitsDialog::showRow(int row)
{
    const UnitEntry& unit = m_config.units[row];
    const UnitRules::Errors errors = UnitRules::errors(m_config, row);
    const QString place = errors.isEmpty()
                              ? placeOf(unit)
                              : tr("%1: %2").arg(m_form->captionOf(errors.firstKey()), errors.first());
    const QString texts[ColumnCount] = {unit.name, place};
    for (int column = 0; column < ColumnCount; ++column) {
        if (!m_table->item(row, column))
            m_table->setItem(row, column, new QTableWidgetItem);
        QTableWidgetItem* item = m_table->item(row, column);
        item->setText(texts[column]);
        item->setToolTip(texts[column]);
        item->setData(Qt::ForegroundRole, errors.isEmpty() ? QVariant() : QVariant(QColor(danger)));
    }
}

void UnitsDialog::selectUnit(const QString& name)
{
    for (int row = 0; row < m_config.units.size(); ++row) {
        if (m_config.units[row].name == name)
            m_table->setCurrentCell(row, 0);
    }
}

QString UnitsDialog::freeName() const
{
    QStringList names;
    for (const UnitEntry& unit : m_config.units)
        names += unit.name;
    int number = names.size() + 1;
    while (names.contains(tr("UPS %1").arg(number)))
        ++number;
    return tr("UPS %1").arg(number);
}

void UnitsDialog::addUnit()
{
    UnitEntry unit;
    unit.name = freeName();
    // A port that is free is the likely one.
    const QVector<SerialPortName> ports = serialports::list();
    for (const SerialPortName& port : ports) {
        UnitConfig withUnit = m_config;
        unit.portName = port.path;
        withUnit.units += unit;
        if (UnitRules::unitsOnPort(withUnit, m_config.units.size()).isEmpty())
            break;
        unit.portName.clear();
    }
    m_config.units += unit;
    {
        const QSignalBlocker noSelection(m_table);
        m_table->setRowCount(m_config.units.size());
        showRow(m_config.units.size() - 1);
    }
    m_table->setCurrentCell(m_config.units.size() - 1, 0);
    setChanged();
    m_form->focusField(UnitField::Name);
}

void UnitsDialog::removeUnit()
{
    const int row = current();
    m_config.units.removeAt(row);
    {
        const QSignalBlocker noSelection(m_table);
        m_table->removeRow(row);
    }
    m_table->setCurrentCell(qMin(row, m_config.units.size() - 1), 0);
    setChanged();
    showUnit();
}

void UnitsDialog::testUnit()
{
    if (showFirstError(current(), current()))
        return;
    const UnitEntry& unit = m_config.units[current()];
    // Only a port that units have is held: the manager would open any other.
    RunningPort running;
    for (const UnitEntry& stored : m_files.stored().units) {
        const bool isSamePort =
            m_runningUnits.contains(stored.name) && !stored.isTcp() && !unit.isTcp() &&
            serialports::deviceOf(stored.portName) == serialports::deviceOf(unit.portName);
        if (isSamePort)
            running = {m_runningPorts, stored.portName};
    }
    m_test->start(unit, m_config.lines.value(unitentry::lineSection(unit.portName)), running);
    showFindings();
}

bool UnitsDialog::isTesting() const
{
    return m_test->isRunning();
}

bool UnitsDialog::showFirstError(int first, int last)
{
    for (int row = first; row <= last; ++row) {
        const UnitRules::Errors errors = UnitRules::errors(m_config, row);
        if (errors.isEmpty())
            continue;
        m_table->setCurrentCell(row, 0);
        showProblem(tr("%1, %2: %3")
                        .arg(m_config.units[row].name, m_form->captionOf(errors.firstKey()), errors.first()));
        m_form->focusField(errors.firstKey());
        return true;
    }
    return false;
}

void UnitsDialog::explain(const QString& reason)
{
    m_notice->setText(reason);
    m_notice->show();
}

void UnitsDialog::showProblem(const QString& text)
{
    m_problem->setText(text);
    m_problem->setVisible(!text.isEmpty());
}

void UnitsDialog::save()
{
    if (m_config.units.isEmpty()) {
        showProblem(tr("At least one unit is needed"));
        return;
    }
    if (showFirstError(0, m_config.units.size() - 1))
        return;
    const QString error = m_files.save(m_config);
    showProblem(error);
    if (!error.isEmpty())
        return;
    if (isWindowModified())
        emit unitsChanged();
    accept();
}

void UnitsDialog::reject()
{
    if (!isWindowModified()) {
        QDialog::reject();
        return;
    }
    auto* question =
        new QMessageBox(QMessageBox::Question, tr("Units"), tr("Discard the changes to the units?"),
                        QMessageBox::Discard | QMessageBox::Cancel, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setDefaultButton(QMessageBox::Cancel);
    connect(question->button(QMessageBox::Discard), &QPushButton::clicked, this,
            [this] { QDialog::reject(); });
    question->open(); // no event loop inside: the dialog may be deleted meanwhile
}

void UnitsDialog::done(int result)
{
    m_test->cancel();
    QDialog::done(result);
}
