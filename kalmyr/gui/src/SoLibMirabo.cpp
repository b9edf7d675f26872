#include <kalmyr/gui/SoLibMirabo.h>

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoDynamicLibManager.h>
#include <kalmyr/base/SoPreferences.h>

#include <string>
#include <type_traits>
#include <vector>

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

namespace {

SoKeyboardEvent::Key s_shortcut = SoKeyboardEvent::F12;

void anchor() {} // an address inside this library

std::vector<SbString> candidates()
{
    std::vector<SbString> paths;
    const SbString preferred = SoPreferences::getString("KMR_MIRABO_LIBRARY", "");
    if (!preferred.isEmpty())
        paths.push_back(SbFileHelper::expandString(preferred));
    const SbString name = SoDynamicLibManager::fileName("Mirabo");
    const SbString own = SoDynamicLibManager::getLibraryFromSymbol(&anchor);
    if (!own.isEmpty())
        paths.push_back(SbFileHelper::join(SbFileHelper::getDirName(own), name));
    paths.push_back(name);
    return paths;
}

/// A symbol that the program or one of the libraries it was linked with exports.
void* findInProcess([[maybe_unused]] const char* name)
{
#if defined(_WIN32)
    return nullptr; // there is no such search; a library that is loaded already is found by name
#else
    return dlsym(RTLD_DEFAULT, name);
#endif
}

} // namespace

SoLibMirabo* SoLibMirabo::s_instance = nullptr;

SoLibMirabo* SoLibMirabo::instance()
{
    if (s_instance)
        return s_instance;
    auto* table = new SoLibMirabo;
    if (table->load())
        s_instance = table;
    else
        delete table;
    return s_instance;
}

void SoLibMirabo::finish()
{
    delete s_instance;
    s_instance = nullptr;
}

SoLibMirabo::~SoLibMirabo()
{
    if (m_library)
        SoDynamicLibManager::close(m_library);
}

bool SoLibMirabo::load()
{
    if (loadFromProcess())
        return true;
    SbString tried;
    for (const SbString& path : candidates()) {
        SbString error;
        m_library = SoDynamicLibManager::open(path, &error);
        const auto find = [this, &error](const char* name) {
            return SoDynamicLibManager::symbol(m_library, name, &error);
        };
        if (m_library && resolve(find))
            return true;
        if (m_library)
            SoDynamicLibManager::close(m_library);
        m_library = nullptr;
        tried += "\n  " + path + ": " + error;
    }
    SoDebugError::post("SoLibMirabo::instance", "the inspector's library was not found; tried:%s",
                       tried.getString());
    return false;
}

bool SoLibMirabo::loadFromProcess()
{
    if (!resolve(findInProcess))
        return false;
    // Opened once more, so that it stays until finish(); a program cannot be, and stays anyway.
    m_library = SoDynamicLibManager::open(SoDynamicLibManager::getLibraryFromSymbol(m_mirabo_stop));
    return true;
}

template <class Find>
bool SoLibMirabo::resolve(Find find)
{
    const auto get = [&find](const char* name, auto& function) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(find(name));
        return function != nullptr;
    };
    return get("_startNode", m_mirabo_startNode)
           && get("_startSceneManager", m_mirabo_startSceneManager)
           && get("_startRenderArea", m_mirabo_startRenderArea)
           && get("_startStandalone", m_mirabo_startStandalone) && get("_stop", m_mirabo_stop)
           && get("_isRunning", m_mirabo_isRunning) && get("_processEvents", m_mirabo_processEvents)
           && get("_setPickAction", m_mirabo_setPickAction)
           && get("_setSceneGraph", m_mirabo_setSceneGraph);
}

SoKeyboardEvent::Key SoLibMirabo::getShortcutValue()
{
    return s_shortcut;
}

void SoLibMirabo::setShortcutValue(SoKeyboardEvent::Key key)
{
    s_shortcut = key;
}
