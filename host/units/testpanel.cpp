#include "testpanel.h"

#include "checkthread.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {

constexpr double outputPoints = 9;
constexpr int leastOutputHeight = 90;

CheckSettings settingsOf(const UnitEntry& unit, const LineEntry& line)
{
    CheckSettings settings;
    settings.isTcp = unit.isTcp();
    settings.address = unit.address.toInt();
    settings.host = unit.host;
    settings.tcpPort = unit.tcpPort.toInt();
    for (const UnitKey& row : unitKeys) {
        if (unit.isTcp() ? row.isOnTcp : row.isOnLine)
            settings.described += QLatin1String(row.key) + QLatin1Char('=') + unit.*row.text;
    }
    if (unit.isTcp())
        return settings;
    settings.portName = unit.portName;
    settings.lineSettings = line.param;
    settings.timeoutMs = line.timeoutMs.toInt();
    settings.described += QStringLiteral("param=") + line.param;
    settings.described += QStringLiteral("timeout=") + line.timeoutMs;
    return settings;
}

} // namespace

TestPanel::TestPanel(QWidget* parent)
    : QWidget(parent)
    , m_button(new QPushButton(tr("&Test")))
    , m_status(new QLabel(tr("Asks the unit once, with the settings as they are entered here")))
    , m_output(new QPlainTextEdit)
{
    m_button->setObjectName(QStringLiteral("testUnit"));
    m_button->setAutoDefault(false);
    m_status->setObjectName(QStringLiteral("testStatus"));
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_output->setObjectName(QStringLiteral("TestOutput"));
    m_output->setAccessibleName(tr("Test"));
    m_output->setReadOnly(true);
    m_output->setLineWrapMode(QPlainTextEdit::NoWrap);
    // It gives way to what the dialog has to say; a hint of its own would count as its least height.
    m_output->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_output->setMinimumHeight(leastOutputHeight);
    m_output->setTabChangesFocus(true);
    QFont font(QStringLiteral("Monospace")); // not every platform has a fixed font of its own
    font.setStyleHint(QFont::Monospace);
    font.setPointSizeF(outputPoints);
    m_output->setFont(font);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* head = new QHBoxLayout;
    head->addWidget(m_button);
    head->addWidget(m_status, 1);
    layout->addLayout(head);
    layout->addWidget(m_output, 1);
    connect(m_button, &QPushButton::clicked, this, &TestPanel::press);
}

TestPanel::~TestPanel() = default;

void TestPanel::press()
{
    if (isRunning())
        cancel();
    else
        emit startRequested();
}

void TestPanel::start(const UnitEntry& unit, const LineEntry& line, const RunningPort& runningPort)
{
    m_output->clear();
    m_isCancelled = false;
    m_thread = std::make_unique<CheckThread>(unit.name, settingsOf(unit, line), runningPort);
    connect(m_thread.get(), &CheckThread::lineReady, m_output, &QPlainTextEdit::appendPlainText);
    connect(m_thread.get(), &CheckThread::ended, this, &TestPanel::showEnd);
    m_button->setText(tr("Cancel &test"));
    m_unitName = unit.name;
    m_status->setText(tr("Testing %1 ...").arg(unit.name));
    m_thread->start();
}

void TestPanel::cancel()
{
    if (!isRunning())
        return;
    m_isCancelled = true;
    m_thread->cancel();
    m_button->setEnabled(false);
    m_status->setText(tr("Cancelled: waiting for the query to end ..."));
}

void TestPanel::showEnd(bool hasAnswered)
{
    // It tells this, so it may not be deleted before it has returned.
    m_thread.release()->deleteLater();
    if (m_isCancelled)
        m_status->setText(tr("Cancelled"));
    else
        m_status->setText(hasAnswered ? tr("%1 answers").arg(m_unitName)
                                      : tr("%1 does not answer properly: see the last line").arg(m_unitName));
    m_button->setText(tr("&Test"));
    m_button->setEnabled(true);
    emit ended();
}
