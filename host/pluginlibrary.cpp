#include "pluginlibrary.h"

#include "collectthread.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonObject>

namespace {

QString absoluteFile(const QString& file)
{
    if (file.isEmpty())
        return QCoreApplication::applicationDirPath() + QStringLiteral("/libvek5m_10-30k_Client.so");
    // A bare name would be looked for in Qt's plugin folders.
    return QFileInfo(file).absoluteFilePath();
}

} // namespace

PluginLibrary::PluginLibrary(const QString& file)
    : m_loader(absoluteFile(file))
{
    // Registered here before the plugin does it: the first to register a type lends the code that copies
    // and destroys its values, and that code must outlive the plugin.
    qRegisterMetaType<QMap<int, QVariant>>("QMap<int,QVariant>");
    qRegisterMetaType<CollectThread*>("CollectThread*");
    qRegisterMetaType<QList<int>>("QList<int>");

    const QString wanted = QString::fromLatin1(qobject_interface_iid<CollectThread*>());
    const QString found = m_loader.metaData().value(QStringLiteral("IID")).toString();
    if (!found.isEmpty() && found != wanted) {
        m_error = QStringLiteral("%1: made for the interface %2, not for %3")
                      .arg(absoluteFile(file), found, wanted);
        return;
    }
    // Also the way to the reason when the file is missing or no plugin at all.
    if (!m_loader.load()) {
        m_error = QStringLiteral("%1: plugin not loaded: %2").arg(absoluteFile(file), m_loader.errorString());
        return;
    }
    m_factory = qobject_cast<CollectThread*>(m_loader.instance());
    if (!m_factory)
        m_error = QStringLiteral("%1: its object is no collector").arg(absoluteFile(file));
}

PluginLibrary::~PluginLibrary()
{
    if (m_loader.isLoaded())
        m_loader.unload();
}
