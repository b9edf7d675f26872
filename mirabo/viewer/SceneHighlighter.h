#pragma once

#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts
#include "mirabo/extender/private/Observed.h"
#endif

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/nodes/SoSelection.h>

#include <functional>
#include <memory>
#include <thread>

class SoLineHighlightRenderAction;
class SoPath;
class SoSceneManager;

namespace mirabo {

/// The selection node that holds the scene, and the outline of what is selected in it.
///
/// Graph functions wait for nobody: highlight() does nothing while another thread edits.
class SceneHighlighter {
public:
    /// `picked` is called in this thread when somebody else selects a path, which begins at the
    /// selection node.
    explicit SceneHighlighter(std::function<void(const SoPath*)> picked);
    /// Takes the scene out of the selection node, which others may go on holding.
    ~SceneHighlighter();
    SceneHighlighter(const SceneHighlighter&) = delete;
    SceneHighlighter& operator=(const SceneHighlighter&) = delete;

    /// Draws the outline in the frames of a manager, which is held; null: where the host draws it.
    void install(SoSceneManager* manager);

    bool isInstalled() const { return m_action != nullptr; }

    SoSelection* getSelection() const { return m_selection.get(); }
    /// The node that was set; when there is none, or when it died, the first one that was put into
    /// the selection node since, or null.
    SoNode* getScene() const;
    /// Replaces whatever the selection node holds; null: by nothing.
    void setScene(SoNode* root);

    bool isOn() const { return m_on; }
    /// Off: nothing is selected any more, and nothing outlined.
    void setOn(bool on);

    /// The look of the outline, here and in the host's views; `width` in points, 1 to 16.
    void setStyle(const SbColor& color, float width);

    /// Selects the occurrence at the end of a path that begins at a child of the selection node;
    /// null and other paths: nothing. Does nothing when off.
    void highlight(const SoPath* path);
    void deselect();

private:
    static void pathSelected(void* data, SoPath* path);
    void applyStyle();

    std::function<void(const SoPath*)> m_picked;
    SoRef<SoSelection> m_selection;
    Observed<SoNode> m_scene; ///< kept by the selection node, which others can reach as well
    std::unique_ptr<SoLineHighlightRenderAction> m_action;
    SoRef<SoSceneManager> m_manager;
    std::thread::id m_thread = std::this_thread::get_id();
    SbColor m_color{0, 1, 1};
    float m_width = 2;
    bool m_on = true;
    bool m_selecting = false; ///< the selection is being changed by ourselves
};

} // namespace mirabo
