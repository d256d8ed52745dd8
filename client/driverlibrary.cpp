#include "driverlibrary.h"

#include <QtDebug>

#include <dlfcn.h>

namespace {

// Something of this file and nobody else's: a function's address may be that of another plugin's namesake.
const char ownSymbol = 0;

// A driver leaves the Modbus helpers and port entries undefined and finds them in the process. Hosts load
// plugins with local symbols, where it would not: so the plugin's file is opened once more, which makes
// its symbols global and nothing else.
void makeOwnSymbolsGlobal()
{
    Dl_info info{};
    if (dladdr(&ownSymbol, &info) == 0 || !info.dli_fname)
        return;
    if (void* self = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL))
        dlclose(self); // gives back the reference; the symbols stay global
}

// A driver with a symbol that nobody has would end the process at the first call that needs it. So all are
// looked for now; a driver that lacks one is named, and still loaded, for it may never need it.
bool loadNamingMissingSymbols(QLibrary& library)
{
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (library.load())
        return true;
    const QString firstError = library.errorString();
    library.setLoadHints({});
    if (!library.load())
        return false;
    qDebug("driver library is incomplete: %s", qUtf8Printable(firstError));
    return true;
}

} // namespace

DriverLibrary::DriverLibrary()
    : m_library(QStringLiteral("libvek5m_10-30k"))
{
    makeOwnSymbolsGlobal();
    if (loadNamingMissingSymbols(m_library)) {
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
