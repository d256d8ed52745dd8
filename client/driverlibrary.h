#pragma once

#include "porthandle.h"

#include <QLibrary>

/// Called by a driver for each value it read; see vek5DataProce.
using DriverCallback = void (*)(int pointId, float value, void* context);
/// Reads the whole unit; non-zero when it answered.
using DriverQuery = int (*)(PortHandle* handle, int address, DriverCallback callback, void* context);
/// Sends one command text of at most 49 characters; 0 when it was carried out.
using DriverControl = int (*)(PortHandle* handle, int address, const char* command, void* context);

/// A model driver library and its two entry points. Loaded and freed on the host's thread while no cycle
/// runs; the entries are called on the cycle's thread.
class DriverLibrary
{
public:
    /// Loads libvek5m_10-30k from the loader's paths and resolves both entries. What is missing stays null
    /// and is told as a debug line.
    DriverLibrary();
    /// Unloads it; the file stays in the process while other collectors use it.
    ~DriverLibrary();

    DriverQuery query() const { return m_query; }
    DriverControl control() const { return m_control; }

private:
    Q_DISABLE_COPY(DriverLibrary)

    QLibrary m_library;
    DriverQuery m_query = nullptr;
    DriverControl m_control = nullptr;
};
