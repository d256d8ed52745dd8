#pragma once

#include <QPluginLoader>

class CollectThread;

/// The plugin file, loaded as long as this object lives. Everything that came from it (collectors, pages,
/// records) must be gone before: their code goes with the file. GUI thread.
class PluginLibrary
{
public:
    /// Loads file; an empty name means the plugin beside the program.
    explicit PluginLibrary(const QString& file);
    ~PluginLibrary();
    Q_DISABLE_COPY(PluginLibrary)

    /// The plugin's factory object, owned by the plugin; null when it could not be loaded.
    CollectThread* factory() const { return m_factory; }
    /// Why factory() is null, in one line.
    QString error() const { return m_error; }

private:
    QPluginLoader m_loader;
    CollectThread* m_factory = nullptr;
    QString m_error;
};
