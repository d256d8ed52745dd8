#include "unitseditor.h"

#include "unitsdialog.h"

UnitsEditor::UnitsEditor(const Place& place, QWidget& window)
    : m_place(place)
    , m_window(window)
    , m_action(tr("&Edit units..."))
{
    m_action.setObjectName(QStringLiteral("EditUnits"));
    m_action.setShortcut(Qt::CTRL + Qt::Key_U);
    connect(&m_action, &QAction::triggered, this, &UnitsEditor::open);
}

UnitsEditor::~UnitsEditor()
{
    delete m_open.data();
    qDeleteAll(m_testing);
}

bool UnitsEditor::isBusy() const
{
    return !m_testing.isEmpty();
}

void UnitsEditor::open()
{
    if (m_open)
        return;
    m_open = new UnitsDialog(m_place.devIniFile, m_place.serialIniFile, &m_window);
    m_open->setRunningPorts(m_place.runningPorts, m_place.runningUnits);
    if (m_shownUnit)
        m_open->selectUnit(m_shownUnit());
    connect(m_open, &UnitsDialog::unitsChanged, this, &UnitsEditor::unitsChanged);
    connect(m_open, &UnitsDialog::finished, this, [this, dialog = m_open.data()] { dismiss(dialog); });
    m_open->open();
}

void UnitsEditor::close()
{
    if (m_open)
        m_open->done(QDialog::Rejected);
}

// Deleting a dialog waits for its test, which may be in the middle of a connection attempt.
void UnitsEditor::dismiss(UnitsDialog* dialog)
{
    m_open = nullptr;
    if (!dialog->isTesting()) {
        dialog->deleteLater();
        return;
    }
    m_testing += dialog;
    connect(dialog, &UnitsDialog::testEnded, this, [this, dialog] {
        m_testing.removeAll(dialog);
        dialog->deleteLater();
    });
}
