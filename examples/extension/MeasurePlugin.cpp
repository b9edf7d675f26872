#include "MeasureExtension.h"

#include <mirabo/extender/MrbPlugin.h>

/// The root object of the library.
class MeasurePlugin final : public QObject, public MrbPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID MrbPlugin_iid)
    Q_INTERFACES(MrbPlugin)

public:
    QStringList getExtensionNames() const override { return {"Measure"}; }

    MrbExtension* createExtension(const QString& name) override
    {
        return name == "Measure" ? new MeasureExtension : nullptr;
    }
};

#include "MeasurePlugin.moc"
