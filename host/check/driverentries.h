#pragma once

#include "porthandle.h"

#include <QLibrary>
#include <QString>

/// The driver library as a technician's check calls it: directly, past the plugin.
///
/// The plugin must be loaded meanwhile, for a driver takes its frame helpers from there.
class DriverEntries
{
public:
    using Callback = void (*)(int pointId, float value, void* context);
    using Query = int (*)(PortHandle* handle, int address, Callback callback, void* context);

    DriverEntries();
    ~DriverEntries();

    /// Null when the library or the entry is missing.
    Query query() const { return m_query; }
    /// Which file was found and which entries, or why not; one line.
    QString description() const;

private:
    Q_DISABLE_COPY(DriverEntries)

    QLibrary m_library;
    Query m_query = nullptr;
    bool m_hasControl = false;
};
