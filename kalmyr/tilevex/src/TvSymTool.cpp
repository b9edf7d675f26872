#include <kalmyr/tilevex/TvSymTool.h>

#include <kalmyr/base/SoDebugError.h>
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
    const char* type = nullptr; ///< a type that is registered while the module is started
    int users = 0;
    bool started = false; ///< by us; what the toolkit started itself is its own to finish
};

std::vector<Module>& modules()
{
    static std::vector<Module> known{
        {SbName("Vrml97"), &kalmyr::initVrml, &kalmyr::finishVrml, "VRMLParent"},
        {SbName("Nodekits"), &kalmyr::initNodekits, &kalmyr::finishNodekits, "BaseKit"},
        {SbName("Rendering"), &kalmyr::initRendering, nullptr},
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

} // namespace

bool TvSymTool::initModule(const SbName& name)
{
    Module* module = findOrComplain(name, "TvSymTool::initModule");
    if (!module)
        return false;
    if (module->users++ > 0)
        return true;
    module->started = !module->type || SoType::fromName(SbName(module->type)).isBad();
    if (module->started && module->init)
        module->init();
    return true;
}

bool TvSymTool::finishModule(const SbName& name)
{
    Module* module = findOrComplain(name, "TvSymTool::finishModule");
    if (!module)
        return false;
    if (module->users == 0 || --module->users > 0)
        return true;
    if (module->started && module->finish)
        module->finish();
    module->started = false;
    return true;
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
