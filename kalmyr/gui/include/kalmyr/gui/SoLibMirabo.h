#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/events/SoKeyboardEvent.h>

class SbViewportRegion;
class SoNode;
class SoSceneManager;

/// The hook table: the inspector's plain exports, found at run time by library and symbol name, so
/// that the toolkit does not link the inspector.
///
/// An inspector that the process has loaded already is taken; otherwise the library is looked for
/// in the preference "KMR_MIRABO_LIBRARY", then beside this library, then by the system's search.
/// One table per process, which keeps the library loaded.
class KALMYRGUI_API SoLibMirabo {
public:
    static bool isAvailable() { return s_instance != nullptr; }
    /// Loads the library if need be; null, with a debug error that says where it was looked for,
    /// when it cannot be loaded.
    static SoLibMirabo* instance();
    /// Lets the library go. The inspector must not be running.
    static void finish();

    /// Key that opens the inspector from a render area; F12 by default.
    static SoKeyboardEvent::Key getShortcutValue();
    static void setShortcutValue(SoKeyboardEvent::Key key);

    void (*m_mirabo_startNode)(SoNode* root) = nullptr;
    void (*m_mirabo_startSceneManager)(SoSceneManager* manager) = nullptr;
    /// Takes an SoRenderAreaCore.
    void (*m_mirabo_startRenderArea)(void* renderArea) = nullptr;
    void (*m_mirabo_startStandalone)(int argc, char** argv) = nullptr;
    void (*m_mirabo_stop)() = nullptr;
    bool (*m_mirabo_isRunning)() = nullptr;
    bool (*m_mirabo_processEvents)() = nullptr;
    void (*m_mirabo_setPickAction)(const SbViewportRegion& region, SbVec2s cursor) = nullptr;
    void (*m_mirabo_setSceneGraph)(SoNode* root) = nullptr;

private:
    SoLibMirabo() = default;
    ~SoLibMirabo();
    bool load();
    bool loadFromProcess();
    /// Fills all members by a function from symbol name to address; false when one is missing.
    template <class Find>
    bool resolve(Find find);

    void* m_library = nullptr; ///< null when the exports are those of the program itself
    static SoLibMirabo* s_instance;
};
