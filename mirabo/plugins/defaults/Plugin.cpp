#include "EditorTable.h"
#include "FieldEditor.h"
#include "ValueEditor.h"

#include <mirabo/extender/MrbPlugin.h>

#include <QObject>

#include <algorithm>

namespace {

constexpr char kFieldEditor[] = "Field Editor";

} // namespace

/// The extensions that come with the tool.
class DefaultsPlugin final : public QObject, public MrbPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID MrbPlugin_iid)
    Q_INTERFACES(MrbPlugin)

public:
    QStringList getExtensionNames() const override
    {
        QStringList names{kFieldEditor};
        for (const EditorEntry& entry : editorTable())
            names << entry.name;
        return names;
    }
    MrbExtension* createExtension(const QString& name) override
    {
        if (name == kFieldEditor)
            return new FieldEditor;
        const auto& entries = editorTable();
        const auto entry = std::find_if(entries.begin(), entries.end(),
                                        [&name](const auto& other) { return other.name == name; });
        return entry == entries.end() ? nullptr : new ValueEditor(*entry);
    }
};

#include "Plugin.moc"
