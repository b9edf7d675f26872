#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/gui/SoInspectorViews.h>

#include <QObject>

#include <functional>

class SbViewportRegion;
class SoNode;
class SoPath;
class SoSelection;

namespace mirabo {

/// The views that show the inspected scene, while a session runs: the host's, or the tool's own
/// viewer. In the host's the selected object is outlined, and clicks pick.
class HostViews final : public QObject {
public:
    /// Told of picks of the user: the path of what was hit, from above or below the inspected root,
    /// or null when there was nothing. May end the tool.
    using PickFunction = std::function<void(const SoPath* path)>;

    /// `selection` holds the inspected root. `standalone`: the scene is in the tool's own viewer,
    /// which outlines and picks by itself; what is told then is clicks on nothing.
    HostViews(SoSelection* selection, bool standalone, bool outlines, PickFunction picked);
    ~HostViews() override;

    /// Off: nothing is outlined in the host's views, and no clicks are told, while the tool waits
    /// for its end. On at first.
    void setActive(bool on);

    /// A pick that the host reports at a window position of a view with that region.
    void pick(const SbViewportRegion& region, const SbVec2s& position);

private:
    static void clicked(void* data, SoGuiRenderArea* area, const SbVec2s& position,
                        SoInspectorViews::Click click);
    static void selectionChanged(void* data, SoSelection* selection);
    SoNode* inspectedRoot() const;
    SoNode* hostScene() const;
    SoRef<SoPath> pathFromRoot(const SoPath& picked) const;
    void clickedIn(const SoGuiRenderArea& area, const SbVec2s& position);
    SoRef<SoNode> findGraph(const SbViewportRegion& region) const;
    void pickIn(SoNode* graph, const SbViewportRegion& region, const SbVec2s& position);

    SoRef<SoSelection> m_selection;
    const bool m_standalone;
    const bool m_outlines;
    bool m_active = false;
    PickFunction m_picked;
};

} // namespace mirabo
