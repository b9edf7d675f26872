#include <kalmyr/nodes/SoLevelOfDetail.h>

#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

/// The node that measures its children in this thread: it does not choose among them meanwhile.
constinit thread_local const SoLevelOfDetail* t_measuring = nullptr;

} // namespace

SO_NODE_SOURCE(SoLevelOfDetail)

SoLevelOfDetail::SoLevelOfDetail()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_ADD_EMPTY_FIELD(screenArea);
}

SoLevelOfDetail::~SoLevelOfDetail() = default;

void SoLevelOfDetail::initClass()
{
    SO_NODE_INIT_CLASS(SoLevelOfDetail, SoGroup, "LevelOfDetail");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        static_cast<SoLevelOfDetail*>(node)->SoGroup::doAction(action);
    });
}

SbBox3f SoLevelOfDetail::getBox(SoState* state) const
{
    const std::uint64_t id = SoElement::mix(getNodeId(), SoBoundingBoxCache::stateKey(state));
    {
        const std::lock_guard lock(m_mutex);
        if (m_boxId == id)
            return m_box;
    }
    // As it stands in the scene, for children may take positions from what comes before them.
    const SoAction* action = state->getAction();
    const SoRef<SoPath> path(action->getCurPath());
    const auto* outer = std::exchange(t_measuring, this);
    SoGetBoundingBoxAction measuring(SoViewportRegionElement::get(state));
    measuring.apply(path.get());
    SbXfBox3f found = measuring.getXfBoundingBox();
    // Not the matrix of the state: the path leads to the first of several copies.
    SoGetMatrixAction toWorld;
    toWorld.apply(path.get());
    t_measuring = outer;
    found.transform(toWorld.getMatrix().inverse());
    const SbBox3f box = found.project();
    const std::lock_guard lock(m_mutex);
    m_boxId = id;
    m_box = box;
    return box;
}

float SoLevelOfDetail::getScreenArea(SoState* state) const
{
    const SoView& view = SoViewElement::get(state);
    const SbBox3f box = view.valid ? getBox(state) : SbBox3f();
    bool isInvertible = true;
    const SbMatrix toObject = SoModelMatrixElement::get(state).inverse(&isInvertible);
    if (box.isEmpty() || !isInvertible)
        return 0;
    SbViewVolume volume = view.volume;
    volume.transform(toObject);
    if (volume.getProjectionType() == SbViewVolume::PERSPECTIVE) {
        const SbPlane eye(volume.getProjectionDirection(), volume.getProjectionPoint());
        for (int i = 0; i < 8; ++i)
            if (eye.getDistance(box.getCorner(i)) <= 0)
                return std::numeric_limits<float>::max();
    }
    const SbVec2f part = volume.projectBox(box);
    const SbVec2s pixels = SoViewportRegionElement::get(state).getViewportSizePixels();
    return part[0] * part[1] * static_cast<float>(pixels[0]) * static_cast<float>(pixels[1]);
}

int SoLevelOfDetail::chooseChild(SoState* state) const
{
    const int last = getNumChildren() - 1;
    if (last <= 0 || screenArea.getNum() == 0 || screenArea.isIgnored()
        || !SoViewElement::get(state).valid)
        return std::min(last, 0);
    const float area = getScreenArea(state);
    const auto areas = screenArea.values();
    const auto at =
        std::find_if(areas.begin(), areas.end(), [area](float least) { return area >= least; });
    return std::min(last, static_cast<int>(at - areas.begin()));
}

void SoLevelOfDetail::doAction(SoAction* action)
{
    if (t_measuring == this) {
        SoGroup::doAction(action);
        return;
    }
    int next = -1;
    if (action->isOnPath(next)) {
        if (next >= 0 && next < getNumChildren())
            action->traverse(m_children[next], next);
        return;
    }
    const int chosen = chooseChild(action->getState());
    if (chosen >= 0)
        action->traverse(m_children[chosen], chosen);
}
