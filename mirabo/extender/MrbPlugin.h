#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QStringList>
#include <QtPlugin>

class MrbExtension;

/// The version of this interface, MAJOR.MINOR: a plug-in runs in a tool of the same major version
/// and of the same or a later minor version.
#define MRB_PLUGIN_API "1.0"
/// Names the interface in Q_PLUGIN_METADATA.
#define MrbPlugin_iid "dev.mirabo.MrbPlugin/" MRB_PLUGIN_API

/// The root object of a plug-in library: a factory of extensions.
///
///     class Plugin final : public QObject, public MrbPlugin {
///         Q_OBJECT
///         Q_PLUGIN_METADATA(IID MrbPlugin_iid)
///         Q_INTERFACES(MrbPlugin)
///     public:
///         QStringList getExtensionNames() const override { return {"Bounds"}; }
///         MrbExtension* createExtension(const QString& name) override { return new Bounds; }
///     };
///
/// Made once per load, deleted after its last extension; its code stays mapped until the process
/// ends. The order of the virtual operations is part of the binary interface.
class MRBEXT_API MrbPlugin {
public:
    virtual ~MrbPlugin();

    /// The extensions that the configuration can name.
    virtual QStringList getExtensionNames() const = 0;
    /// A new extension of that name, which the caller owns; null for an unknown name. Called once
    /// for every place where the active profile names it.
    virtual MrbExtension* createExtension(const QString& name) = 0;
};

Q_DECLARE_INTERFACE(MrbPlugin, MrbPlugin_iid)
