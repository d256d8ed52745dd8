#include "linesettingsrow.h"

#include "baudtable.h"
#include "linespeeds.h"
#include "wiretime.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>

namespace {

constexpr int slowestOffered = 1200;

// A speed that the system has, neither replaced by another nor left as it was.
bool isSpeedOfSystem(const BaudRow& row)
{
    const LineSpeed& speed = lineSpeeds[row.value];
    return row.baud >= slowestOffered && speed.inForce == row.value && speed.speed != KeepSpeed;
}

// What a settings text has for the parity; a number out of the range leaves the line alone and has none.
QString parityPart(ParityType parity)
{
    static const QString parts = QStringLiteral("noesm"); // in the order of the enumeration
    return parity >= 0 && parity < parts.size() ? QString(parts.at(parity)) : QString();
}

} // namespace

LineSettingsRow::LineSettingsRow(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_speed = addBox(tr("Speed"));
    for (const BaudRow& row : baudTable) {
        if (isSpeedOfSystem(row))
            m_speed->addItem(tr("%1 baud").arg(row.baud), QString::number(row.baud));
    }
    m_parity = addBox(tr("Parity"));
    m_parity->addItem(tr("no parity"), QStringLiteral("n"));
    m_parity->addItem(tr("even parity"), QStringLiteral("e"));
    m_parity->addItem(tr("odd parity"), QStringLiteral("o"));
    m_dataBits = addBox(tr("Data bits"));
    for (const int bits : {8, 7})
        m_dataBits->addItem(tr("%1 data bits").arg(bits), QString::number(bits));
    m_stopBits = addBox(tr("Stop bits"));
    m_stopBits->addItem(tr("1 stop bit"), QStringLiteral("1"));
    m_stopBits->addItem(tr("2 stop bits"), QStringLiteral("2"));
    setFocusProxy(m_speed);
    for (QComboBox* box : {m_speed, m_parity, m_dataBits, m_stopBits})
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &LineSettingsRow::compose);
}

QComboBox* LineSettingsRow::addBox(const QString& accessibleName)
{
    auto* box = new QComboBox(this);
    box->setAccessibleName(accessibleName);
    layout()->addWidget(box);
    return box;
}

// Rare settings are offered where a file has them.
void LineSettingsRow::choose(QComboBox* box, const QString& part, const QString& text)
{
    const QSignalBlocker noEdit(box);
    if (!part.isEmpty() && box->findData(part) < 0)
        box->addItem(text, part);
    box->setCurrentIndex(box->findData(part));
}

void LineSettingsRow::setParam(const QString& param)
{
    m_param = param;
    const ParsedSettings parsed = parseSettings(param);
    const bool isRight = parsed.error == SettingsError::None;
    const auto number = [isRight](int value, bool isKnown) {
        return isRight && isKnown ? QString::number(value) : QString();
    };
    const PortSettings& settings = parsed.settings;
    const int baud = wiretime::baudOf(settings.BaudRate);
    choose(m_speed, number(baud, baud != 0), tr("%1 baud").arg(baud));
    const QString parity = isRight ? parityPart(settings.Parity) : QString();
    choose(m_parity, parity, settings.Parity == ParitySpace ? tr("space parity") : tr("mark parity"));
    const int dataBits = 5 + settings.DataBits;
    choose(m_dataBits, number(dataBits, dataBits >= 5 && dataBits <= 8), tr("%1 data bits").arg(dataBits));
    const int stopBits = 1 + settings.StopBits;
    choose(m_stopBits, number(stopBits, stopBits == 1 || stopBits == 2), QString());
}

void LineSettingsRow::compose()
{
    QStringList parts;
    for (const QComboBox* box : {m_speed, m_parity, m_dataBits, m_stopBits})
        parts += box->currentData().toString();
    m_param = parts.contains(QString()) ? QString() : parts.join(QLatin1Char(','));
    emit edited();
}
