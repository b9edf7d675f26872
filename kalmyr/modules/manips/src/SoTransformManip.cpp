#include <kalmyr/manips/SoTransformManip.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/draggers/SoTransformDragger.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/nodes/SoGroup.h>

#include <algorithm>
#include <utility>

namespace {

/// The manipulator that measures, in this thread, what follows it.
constinit thread_local const SoTransformManip* t_measuring = nullptr;

/// A group with thousands of children is not gone through for the handles of one of them.
constexpr int kMaxMeasured = 64;

} // namespace

SO_NODE_SOURCE(SoTransformManip)

SoTransformManip::SoTransformManip() : SoTransformManip(new SoTransformDragger)
{
    followFields();
}

SoTransformManip::SoTransformManip(SoDragger* dragger)
    : m_manip(
        this, dragger, [this] { takeFromDragger(); }, [this] { giveToDragger(); })
{
    SO_NODE_CONSTRUCTOR(SoTransform);
    dragger->setSurround([this] { return surrounded(); });
}

SoTransformManip::~SoTransformManip()
{
    getDragger()->setSurround({}); // somebody may hold it longer
}

void SoTransformManip::initClass()
{
    SO_NODE_INIT_CLASS(SoTransformManip, SoTransform, "TransformManip");
}

void SoTransformManip::followFields()
{
    m_manip.follow({&translation, &rotation, &scaleFactor, &scaleOrientation, &center});
}

void SoTransformManip::takeFromDragger()
{
    const auto* dragger = static_cast<const SoTransformDragger*>(getDragger());
    kalmyr::detail::putValue(translation, dragger->translation.getValue());
    kalmyr::detail::putValue(rotation, dragger->rotation.getValue());
    kalmyr::detail::putValue(scaleFactor, dragger->scaleFactor.getValue());
}

void SoTransformManip::giveToDragger()
{
    auto* dragger = static_cast<SoTransformDragger*>(getDragger());
    kalmyr::detail::putValue(dragger->translation, translation.getValue());
    kalmyr::detail::putValue(dragger->rotation, rotation.getValue());
    kalmyr::detail::putValue(dragger->scaleFactor, scaleFactor.getValue());
    kalmyr::detail::putValue(dragger->scaleOrientation, scaleOrientation.getValue());
    kalmyr::detail::putValue(dragger->center, center.getValue());
}

void SoTransformManip::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (t_measuring == this) {
        SoModelMatrixElement::makeIdentity(state, this); // what comes before does not count
        return;
    }
    if (action->getPathMode() != SoAction::OFF_PATH) {
        if (!action->isOfType(SoGetBoundingBoxAction::getClassTypeId()))
            measure(action);
        state->push();
        SoModelMatrixElement::mult(state, this, getDraggerPlace());
        m_manip.traverse(action);
        state->pop();
    }
    SoTransform::doAction(action);
}

void SoTransformManip::measure(SoAction* action)
{
    SoNode* parent = action->getCurNode(1);
    if (parent && !parent->isOfType(SoGroup::getClassTypeId()))
        parent = nullptr;
    const std::uint64_t id = parent ? parent->getNodeId() : 0;
    {
        const std::lock_guard lock(m_mutex);
        // While it is held its handles must not run away from the pointer.
        if ((parent == m_parent && id == m_parentId) || getDragger()->isActive.getValue())
            return;
    }
    SbBox3f box;
    if (parent) {
        const auto* group = static_cast<const SoGroup*>(parent);
        const int first = group->findChild(this) + 1;
        const int end = std::min(group->getNumChildren(), first + kMaxMeasured);
        SoGetBoundingBoxAction measuring(SoViewportRegionElement::get(action->getState()));
        const auto* outer = std::exchange(t_measuring, this);
        for (int i = first; i < end; ++i) {
            const SoRef<SoPath> path(new SoPath(parent));
            path->append(i);
            measuring.apply(path.get());
            box.extendBy(measuring.getBoundingBox());
        }
        t_measuring = outer;
    }
    const std::lock_guard lock(m_mutex);
    m_parent = parent;
    m_parentId = id;
    m_box = box;
}

SbBox3f SoTransformManip::surrounded() const
{
    SbBox3f box;
    {
        const std::lock_guard lock(m_mutex);
        box = m_box;
    }
    if (!box.isEmpty())
        box.transform(getOwnSpace());
    return box;
}
