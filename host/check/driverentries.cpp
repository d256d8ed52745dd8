#include "driverentries.h"

DriverEntries::DriverEntries()
    : m_library(QStringLiteral("libvek5m_10-30k"))
{
    if (!m_library.load())
        return;
    m_query = reinterpret_cast<Query>(m_library.resolve("Query"));
    m_hasControl = m_library.resolve("Control") != nullptr;
}

DriverEntries::~DriverEntries()
{
    if (m_library.isLoaded())
        m_library.unload();
}

QString DriverEntries::description() const
{
    if (!m_library.isLoaded())
        return m_library.errorString();
    const auto found = [](bool isThere) {
        return isThere ? QStringLiteral("found") : QStringLiteral("missing");
    };
    return QStringLiteral("%1: Query %2, Control %3")
        .arg(m_library.fileName(), found(m_query != nullptr), found(m_hasControl));
}
