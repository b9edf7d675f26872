#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>

#include <vector>

/// Starts and finishes the toolkit's optional modules by name. Each is counted: it starts with the
/// first initModule() and finishes with the last finishModule(). One that the toolkit has started
/// by itself (SoDB::init()) is left to it.
class TILEVEX_API TvSymTool {
public:
    using Function = void (*)();

    TvSymTool() = delete;

    /// False, with a debug error that names it, for a module that is not known.
    static bool initModule(const SbName& name);
    /// False for an unknown module; one that was not started is left alone.
    static bool finishModule(const SbName& name);
    static bool isInitialized(const SbName& name);

    /// Makes a module known; one known already by that name is replaced while it is not started.
    static bool registerModule(const SbName& name, Function init, Function finish);
    static std::vector<SbName> getModuleNames();
};
