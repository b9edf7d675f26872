#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoFieldContainer.h>

class SoSceneManager;

/// Base of all render areas: holds a scene manager.
class KALMYRGUI_API SoRenderAreaCore : public SoFieldContainer {
public:
    static SoType getClassTypeId();
    static void initClass();

    virtual SoSceneManager* getSceneManager() const = 0;
};
