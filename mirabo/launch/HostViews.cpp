#include "mirabo/launch/HostViews.h"

#include "mirabo/extender/private/Frame.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extension/MrbServicesImpl.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/core/SoPlaces.h>
#include <kalmyr/gui/SoGuiViewer.h>
#include <kalmyr/nodes/SoSelection.h>

#include <QThread>

#include <utility>

namespace mirabo {

namespace {

/// The viewer that the tool was started on, if it is one.
SoGuiViewer* hostViewer()
{
    SoGuiRenderArea* area = MrbServicesImpl::getInstance()->getRenderArea();
    return area && area->isOfType(SoGuiViewer::getClassTypeId()) ? static_cast<SoGuiViewer*>(area)
                                                                 : nullptr;
}

bool isOfSize(const SoGuiRenderArea& area, const SbViewportRegion& region)
{
    const SbVec2i32 size = area.getSize();
    return region.getWindowSize()
           == SbVec2s(static_cast<short>(size[0]), static_cast<short>(size[1]));
}

} // namespace

HostViews::HostViews(SoSelection* selection, bool standalone, bool outlines, PickFunction picked)
    : m_selection(selection),
      m_standalone(standalone),
      m_outlines(outlines && !standalone),
      m_picked(std::move(picked))
{
    setActive(true);
}

HostViews::~HostViews()
{
    setActive(false);
}

void HostViews::setActive(bool on)
{
    if (on == m_active)
        return;
    m_active = on;
    const GraphReading graph;
    SoInspectorViews::setClickFunction(on ? &HostViews::clicked : nullptr, this);
    if (on && m_outlines) {
        m_selection->addChangeCallback(&HostViews::selectionChanged, this);
        selectionChanged(this, m_selection.get());
    } else {
        m_selection->removeChangeCallback(&HostViews::selectionChanged, this);
        SoInspectorViews::setOutlined(nullptr);
    }
}

/// The selected path begins at the selection node, which the host's views do not know.
void HostViews::selectionChanged(void* data, SoSelection* selection)
{
    const SoPath* path = selection->getNumSelected() > 0 ? selection->getPath(0) : nullptr;
    const SoNode* scene = static_cast<HostViews*>(data)->hostScene();
    const bool isInScene = path && path->getLength() > 2 && path->getNode(2) == scene;
    SoInspectorViews::setOutlined(path, isInScene ? 2 : 1);
}

SoNode* HostViews::inspectedRoot() const
{
    return m_selection->getNumChildren() > 0 ? m_selection->getChild(0) : nullptr;
}

/// Returns the graph that all views of the host show. A tool that was started on a viewer also
/// shows the camera and headlight that the viewer has around it.
SoNode* HostViews::hostScene() const
{
    SoNode* root = inspectedRoot();
    const SoGuiViewer* viewer = hostViewer();
    const bool isViewers =
        viewer && viewer->getSceneGraph() && viewer->getSceneManager()->getSceneGraph() == root;
    return isViewers ? viewer->getSceneGraph() : root;
}

/// The path of something in the host's scene as the tool has it; null for what is not in it.
SoRef<SoPath> HostViews::pathFromRoot(const SoPath& picked) const
{
    SoNode* root = inspectedRoot();
    if (picked.containsNode(root))
        return SoRef<SoPath>(picked.copy());
    SoNode* scene = hostScene();
    int i = 0;
    while (i < picked.getLength() && picked.getNode(i) != scene)
        ++i;
    if (scene == root || i == picked.getLength())
        return nullptr;
    const int index = root->getChildren()->find(scene); // a viewer's own group
    if (index < 0)
        return nullptr;
    SoRef<SoPath> path(new SoPath(root));
    for (path->append(index); ++i < picked.getLength();)
        path->append(picked.getNode(i), picked.getIndex(i));
    return path;
}

void HostViews::clicked(void* data, SoGuiRenderArea* area, const SbVec2s& position,
                        SoInspectorViews::Click click)
{
    auto* self = static_cast<HostViews*>(data);
    if (QThread::currentThread() != self->thread())
        return;
    const Frame frame;
    // In the tool's own viewer a press on something is handled by the selection node.
    if (!self->m_standalone && click == SoInspectorViews::CLICKED)
        self->clickedIn(*area, position);
    else if (self->m_standalone && click == SoInspectorViews::PRESSED
             && area == MrbServicesImpl::getInstance()->getRenderArea())
        self->m_picked(nullptr);
}

void HostViews::clickedIn(const SoGuiRenderArea& area, const SbVec2s& position)
{
    const SoSceneManager& manager = *area.getSceneManager();
    pickIn(manager.getSceneGraph(), manager.getViewportRegion(), position);
}

void HostViews::pick(const SbViewportRegion& region, const SbVec2s& position)
{
    if (m_standalone || !inspectedRoot())
        return;
    SoRef<SoNode> graph;
    {
        const GraphReading reading;
        if (!reading)
            return; // another thread edits what the user clicks at
        graph = findGraph(region);
    }
    if (!graph)
        return;
    pickIn(graph.get(), region, position);
    const GraphReading reading;
    graph.reset();
}

/// Returns the graph that the host's view with that region draws; null while that view is in
/// viewing mode.
SoRef<SoNode> HostViews::findGraph(const SbViewportRegion& region) const
{
    SoNode* drawn = SoInspectorViews::findDrawn(hostScene(), region);
    const SoGuiViewer* viewer = hostViewer();
    if (viewer && (!drawn || isOfSize(*viewer, region))) {
        if (viewer->isViewing() || !viewer->getCamera())
            return nullptr;
        SoRef<SoSeparator> seen(new SoSeparator);
        seen->addChild(viewer->getCamera());
        seen->addChild(m_selection.get());
        return seen;
    }
    if (!drawn)
        drawn = SoInspectorViews::findManaged(hostScene(), region);
    return drawn ? drawn : m_selection.get(); // with a camera of its own, if at all
}

void HostViews::pickIn(SoNode* graph, const SbViewportRegion& region, const SbVec2s& position)
{
    SoRef<SoPath> hit;
    const SoRef<SoNode> held(graph);
    {
        const GraphReading reading;
        if (!reading || !graph || !inspectedRoot() || !kalmyr::isBelow(graph, hostScene()))
            return;
        SoRayPickAction action(region);
        action.setPoint(position);
        action.apply(graph);
        const SoPickedPoint* point = action.getPickedPoint();
        if (point && inspectedRoot())
            hit = pathFromRoot(*point->getPath());
        if (point && !hit)
            return; // something of the host's that has no row
    }
    // Nodes of the host may have ended the tool.
    m_picked(hit.get());
    const GraphReading reading;
    hit.reset();
}

} // namespace mirabo
