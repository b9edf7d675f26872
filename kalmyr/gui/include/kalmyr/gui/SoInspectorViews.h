#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

#include <vector>

class SbColor;
class SbViewportRegion;
class SoGLRenderAction;
class SoGuiRenderArea;
class SoNode;
class SoOutline;
class SoPath;
class SoSceneManager;

/// Draws the inspector's outline in the views of the program, and tells it of clicks in them.
///
/// Every scene manager draws the inspector's outline over its scene, with whatever action it has,
/// and every render area tells of clicks. Views of another kind are made known by their action, in
/// one call. Without an inspector there is nothing to draw and nobody to tell.
///
/// Threads: the thread of the user interface.
class KALMYRGUI_API SoInspectorViews {
public:
    using RedrawFunction = void(void* data);

    /// For programs with views that are neither render areas nor drawn by a scene manager: from now
    /// on `action`, which is not null, draws the inspector's outline after the scene that it is
    /// applied to. `redraw`, if any, is called when the outline has changed. May be called once and
    /// for all, before an inspector is started; an action that dies is forgotten.
    static void addView(SoGLRenderAction* action, RedrawFunction* redraw = nullptr,
                        void* data = nullptr);
    static void removeView(SoGLRenderAction* action);

    /// For the inspector: outlines an object, as SoOutline::setPath() has it, in all views that
    /// show it, and has them redrawn. Null: nothing.
    static void setOutlined(const SoPath* path, int from = 0);

    /// The path that is outlined, of which the nodes from number `from` on count, which may stand
    /// anywhere in the scenes. Null without.
    static const SoPath* getOutlined(int& from);

    /// For the inspector: the look of that outline, as SoOutline has it.
    static void setOutlineStyle(const SbColor& color, float width);

    enum Click {
        PRESSED, ///< the first button went down
        CLICKED  ///< and up again, with the pointer at the same place
    };
    /// Told of presses and clicks that the viewer is not busy with (picking mode), and that nothing
    /// in the scene handled, at a window position in pixels. May do anything.
    using ClickFunction = void(void* data, SoGuiRenderArea* area, const SbVec2s& position,
                               Click click);
    /// For the inspector; null: none.
    static void setClickFunction(ClickFunction* function, void* data);

    /// The graph, with `scene` in it, that one of the views made known with addView() was drawn
    /// from: one with that viewport if there is any. Null when none was.
    static SoNode* findDrawn(SoNode* scene, const SbViewportRegion& region);
    /// The same of scene managers.
    static SoNode* findManaged(SoNode* scene, const SbViewportRegion& region);

    /// For scene managers: has an action draw the outline as long as this lives.
    class KALMYRGUI_API Drawing {
    public:
        explicit Drawing(SoGLRenderAction& action);
        ~Drawing();
        Drawing(const Drawing&) = delete;
        Drawing& operator=(const Drawing&) = delete;

    private:
        SoGLRenderAction* m_action = nullptr; // Not owned; null when there is nothing to undo.
    };
    /// For scene managers, while they live.
    static void add(SoSceneManager* manager);
    static void remove(SoSceneManager* manager);
    /// For render areas.
    static void tell(SoGuiRenderArea* area, const SbVec2s& position, Click click);
};
