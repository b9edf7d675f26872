#include <mirabo/extender/MrbPlugin.h>

#include <QObject>

/// Defined nowhere, as after an update of a library that the plug-in uses.
MrbExtension* makeFromElsewhere();

class UnresolvedPlugin final : public QObject, public MrbPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID MrbPlugin_iid)
    Q_INTERFACES(MrbPlugin)

public:
    QStringList getExtensionNames() const override { return {"Unresolved"}; }
    MrbExtension* createExtension(const QString&) override { return makeFromElsewhere(); }
};

#include "Plugin.moc"
