#include "driverlibrary.h"

#include "driverentry.h"

#include <QtDebug>

#include <dlfcn.h>

namespace {

// A driver leaves the Modbus helpers and port entries undefined and finds them in the process. Hosts load
// plugins with local symbols, where it would not: so the plugin's file is opened once more, which makes
// its symbols global and nothing else. The file is found from one of its own functions.
void makeOwnSymbolsGlobal()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&vek5DataProce), &info) == 0 || !info.dli_fname)
        return;
    if (void* self = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL))
        dlclose(self); // gives back the reference; the symbols stay global
}

} // namespace

DriverLibrary::DriverLibrary()
    : m_library(QStringLiteral("libvek5m_10-30k"))
{
    makeOwnSymbolsGlobal();
    if (m_library.load()) {
        m_query = reinterpret_cast<DriverQuery>(m_library.resolve("Query"));
        m_control = reinterpret_cast<DriverControl>(m_library.resolve("Control"));
    }
    if (!m_query)
        qDebug("not had Query");
    if (!m_control)
        qDebug("not had Control %s", qUtf8Printable(m_library.errorString()));
}

DriverLibrary::~DriverLibrary()
{
    if (m_library.isLoaded())
        m_library.unload();
}
