#include <kalmyr/tilevex/TvSymTool.h>

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoDynamicLibManager.h>
#include <kalmyr/core/SoCoreInit.h>
#include <kalmyr/core/SoType.h>
#include <kalmyr/nodekits/SoNodekitsInit.h>
#include <kalmyr/rendering/SoRenderingInit.h>
#include <kalmyr/vrml/SoVrmlInit.h>

#include <algorithm>

namespace {

struct Module {
    SbName name;
    TvSymTool::Function init;
    TvSymTool::Function finish;
    const char* type = nullptr;    ///< a type that is registered while the module is started
    const char* library = nullptr; ///< where it is; null: in the toolkit, or registered
    const char* needs = nullptr;   ///< a module that is started before it
    int users = 0;
    bool started = false; ///< by us; what the toolkit started itself is its own to finish
};

// The rendering module frees nothing when it is finished: its context serves whoever draws
// offscreen.
std::vector<Module>& modules()
{
    static std::vector<Module> known{
        {"Vrml97", &kalmyr::initVrml, &kalmyr::finishVrml, "VRMLParent"},
        {"Nodekits", &kalmyr::initNodekits, &kalmyr::finishNodekits, "BaseKit"},
        {"Rendering", &kalmyr::initRendering, nullptr},
        {"Animation", nullptr, nullptr, "Rotor", "KalmyrAnimation"},
        {"Copies", nullptr, nullptr, "MultipleCopy", "KalmyrCopies"},
        {"Draggers", nullptr, nullptr, "Dragger", "KalmyrDraggers"},
        {"Manips", nullptr, nullptr, "TransformManip", "KalmyrManips", "Draggers"},
    };
    return known;
}

Module* find(const SbName& name)
{
    auto& all = modules();
    const auto at =
        std::find_if(all.begin(), all.end(), [&](const Module& m) { return m.name == name; });
    return at == all.end() ? nullptr : &*at;
}

Module* findOrComplain(const SbName& name, const char* source)
{
    Module* module = find(name);
    if (!module)
        SoDebugError::post(source, "the module \"%s\" is not known", name.getString());
    return module;
}

/// Beside our own library; empty when it is not there.
SbString pathOf(const Module& module)
{
    const SbString own = SoDynamicLibManager::getLibraryFromSymbol(&TvSymTool::initModule);
    const SbString path =
        SbFileHelper::getDirName(own) + "/" + SoDynamicLibManager::fileName(module.library);
    return SbFileHelper::isAccessible(path, SbFileHelper::READABLE) ? path : SbString();
}

/// Finds what starts and finishes a module that has a library of its own. Never let go of: nodes
/// of the module may live on.
bool load(Module& module)
{
    if (!module.library || module.init)
        return true;
    const SbString path = pathOf(module);
    if (path.isEmpty())
        return false; // not installed
    SbString error;
    if (const auto library = SoDynamicLibManager::open(path, &error)) {
        module.init = SoDynamicLibManager::function<void()>(library, "kalmyrInitModule", &error);
        module.finish =
            SoDynamicLibManager::function<void()>(library, "kalmyrFinishModule", &error);
    }
    if (module.init && module.finish)
        return true;
    module.init = nullptr;
    SoDebugError::post("TvSymTool::initModule", "the module \"%s\" cannot be loaded: %s",
                       module.name.getString(), error.getString());
    return false;
}

} // namespace

bool TvSymTool::initModule(const SbName& name)
{
    Module* module = findOrComplain(name, "TvSymTool::initModule");
    if (!module || !load(*module) || (module->needs && !initModule(module->needs)))
        return false;
    if (module->users++ > 0)
        return true;
    module->started = !module->type || SoType::fromName(SbName(module->type)).isBad();
    if (module->started && module->init) {
        module->init();
        kalmyr::makeFieldTables();
    }
    return true;
}

bool TvSymTool::finishModule(const SbName& name)
{
    Module* module = findOrComplain(name, "TvSymTool::finishModule");
    if (!module)
        return false;
    if (module->users == 0)
        return true;
    if (--module->users == 0) {
        if (module->started && module->finish)
            module->finish();
        module->started = false;
    }
    return !module->needs || finishModule(module->needs);
}

bool TvSymTool::isAvailable(const SbName& name)
{
    const Module* module = find(name);
    return module && (!module->library || module->init || !pathOf(*module).isEmpty());
}

bool TvSymTool::isInitialized(const SbName& name)
{
    const Module* module = find(name);
    return module && module->users > 0;
}

bool TvSymTool::registerModule(const SbName& name, Function init, Function finish)
{
    Module* module = find(name);
    if (module && module->users > 0)
        return false;
    if (module)
        *module = {name, init, finish};
    else
        modules().push_back({name, init, finish});
    return true;
}

std::vector<SbName> TvSymTool::getModuleNames()
{
    std::vector<SbName> names;
    for (const Module& module : modules())
        names.push_back(module.name);
    return names;
}
