#include <mirabo/extender/MrbPlugin.h>

#include <QObject>

#include <stdexcept>

#ifndef PLUGIN_IID
#define PLUGIN_IID MrbPlugin_iid
#endif

/// Throws as soon as it is made.
class ThrowingPlugin final : public QObject, public MrbPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PLUGIN_IID)
    Q_INTERFACES(MrbPlugin)

public:
    ThrowingPlugin() { throw std::runtime_error("no licence found"); }
    QStringList getExtensionNames() const override { return {}; }
    MrbExtension* createExtension(const QString&) override { return nullptr; }
};

#include "Plugin.moc"
