#include "SliderEditor.h"

#include <mirabo/extender/MrbPlugin.h>

/// The root object of the library.
class SliderPlugin final : public QObject, public MrbPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID MrbPlugin_iid)
    Q_INTERFACES(MrbPlugin)

public:
    QStringList getExtensionNames() const override { return {"Slider"}; }

    MrbExtension* createExtension(const QString& name) override
    {
        return name == "Slider" ? new SliderEditor : nullptr;
    }
};

#include "SliderPlugin.moc"
