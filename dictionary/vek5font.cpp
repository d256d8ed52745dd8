#include "vek5font.h"

#include "eventtexts.h"
#include "logheadings.h"
#include "logrow.h"

#include <QMutex>
#include <QMutexLocker>

#include <iterator>

std::atomic<vek5Font*> vek5Font::m_instance{nullptr};

vek5Font* vek5Font::instance()
{
    if (vek5Font* existing = m_instance.load(std::memory_order_acquire))
        return existing;
    static QMutex mutex;
    const QMutexLocker locker(&mutex);
    if (!m_instance.load(std::memory_order_relaxed))
        m_instance.store(new vek5Font,
                         std::memory_order_release); // never deleted: collectors may outlive main()
    return m_instance.load(std::memory_order_relaxed);
}

vek5Font::vek5Font(QObject* parent)
    : QObject(parent)
{
    for (const char* heading : logheadings::all)
        m_dataLogDesc << tr(heading);
    for (const char* state : logheadings::batteryStates)
        m_batteryState << tr(state);
    for (const char* mode : logheadings::outputModes)
        m_outputMode << tr(mode);

    QVector<QString> events(2 * eventtexts::halfCount, QStringLiteral(""));
    for (const eventtexts::EventText& event : eventtexts::appearances) {
        const QByteArray clearing = QByteArray(event.text) + eventtexts::clearingSuffix;
        events[event.code] = tr(event.text);
        events[event.code + eventtexts::halfCount] = tr(clearing.constData());
    }
    for (const eventtexts::EventText& event : eventtexts::clearingExceptions)
        events[event.code + eventtexts::halfCount] = tr(event.text);
    m_eventLogDesc = QStringList(events.toList());
}

QStringList vek5Font::getDataLogDesc()
{
    QStringList headings;
    headings.reserve(static_cast<int>(std::size(logheadings::handedOut)));
    for (const int index : logheadings::handedOut)
        headings << m_dataLogDesc.at(index);
    return headings;
}

QStringList vek5Font::changeLogData(QMap<int, QVariant> data)
{
    return logrow::valuesOf(data, m_batteryState, m_outputMode);
}

QStringList vek5Font::getEventLogDesc()
{
    return m_eventLogDesc;
}

void vek5Font::flushData(QMap<int, QVariant> data)
{
    m_data = data;
}
