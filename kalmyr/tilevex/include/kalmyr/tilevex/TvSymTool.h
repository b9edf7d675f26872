#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>

#include <vector>

/// Starts and finishes the toolkit's optional modules by name. Each is counted: it starts with the
/// first initModule() and finishes with the last finishModule(). One that the toolkit has started
/// by itself (SoDB::init()) is left to it.
///
/// Known are Vrml97, Nodekits and Rendering, which are part of the toolkit, and four families of
/// nodes with a library of their own beside this one, loaded when first asked for: Animation
/// (nodes that move in real time), Copies (groups that repeat their children), Draggers (things
/// that the user takes and moves) and Manips (transforms and lights with a dragger).
class TILEVEX_API TvSymTool {
public:
    using Function = void (*)();

    TvSymTool() = delete;

    /// False for a module whose library is not installed; and, with a debug error that names it,
    /// for one that is not known or cannot be loaded.
    static bool initModule(const SbName& name);
    /// False for an unknown module; one that was not started is left alone.
    static bool finishModule(const SbName& name);
    /// Whether it is known and installed.
    static bool isAvailable(const SbName& name);
    static bool isInitialized(const SbName& name);

    /// Makes a module known; one known already by that name is replaced while it is not started.
    static bool registerModule(const SbName& name, Function init, Function finish);
    static std::vector<SbName> getModuleNames();
};
