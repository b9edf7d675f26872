#include <kalmyr/manips/SoManip.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/manips/SoClipPlaneManip.h>
#include <kalmyr/manips/SoDirectionalLightManip.h>
#include <kalmyr/manips/SoPointLightManip.h>
#include <kalmyr/manips/SoSpotLightManip.h>
#include <kalmyr/manips/SoTransformManip.h>
#include <kalmyr/nodekits/SoBaseKit.h>
#include <kalmyr/nodes/SoGroup.h>

namespace kalmyr::detail {

ManipDragger::ManipDragger(SoNode* owner, SoDragger* dragger, Step toNode, Step toDragger)
    : m_children(owner),
      m_dragger(dragger),
      m_toNode(std::move(toNode)),
      m_toDragger(std::move(toDragger))
{
    m_dragger->screenSize = kManipSize;
    m_dragger->addMotionCallback(&ManipDragger::dragged, this);
    m_children.append(dragger);
}

ManipDragger::~ManipDragger()
{
    m_dragger->removeMotionCallback(&ManipDragger::dragged, this);
}

void ManipDragger::dragged(void* data, SoDragger*)
{
    auto* self = static_cast<ManipDragger*>(data);
    self->update(self->m_toNode);
}

void ManipDragger::update(const Step& step)
{
    if (m_updating)
        return;
    m_updating = true;
    step();
    m_updating = false;
}

void ManipDragger::follow(std::initializer_list<SoField*> fields)
{
    for (SoField* field : fields) {
        auto sensor = std::make_unique<SoFieldSensor>(
            [](void* data, SoSensor*) {
                auto* self = static_cast<ManipDragger*>(data);
                self->update(self->m_toDragger);
            },
            this);
        sensor->setPriority(0);
        sensor->attach(field);
        m_sensors.push_back(std::move(sensor));
    }
    update(m_toDragger);
}

void ManipDragger::traverse(SoAction* action)
{
    if (action->getPathMode() != SoAction::OFF_PATH)
        action->traverseChildren(m_children);
}

} // namespace kalmyr::detail

namespace {

/// The class that a manipulator of the type extends; bad for other types.
SoType plainTypeOf(SoType type)
{
    for (const SoType base :
         {SoTransformManip::getClassTypeId(), SoDirectionalLightManip::getClassTypeId(),
          SoPointLightManip::getClassTypeId(), SoSpotLightManip::getClassTypeId(),
          SoClipPlaneManip::getClassTypeId()})
        if (!base.isBad() && type.isDerivedFrom(base))
            return base.getParent();
    return SoType::badType();
}

/// Of the nearest kit above the path's end of which that is a part.
SoBaseKit* kitOf(const SoPath& path, SbString& part)
{
    for (int i = path.getLength() - 2; i >= 0; --i) {
        if (!path.getNode(i)->isOfType(SoBaseKit::getClassTypeId()))
            continue;
        auto* kit = static_cast<SoBaseKit*>(path.getNode(i));
        part = kit->getPartString(path.getTail());
        return part.getLength() > 0 ? kit : nullptr;
    }
    return nullptr;
}

bool putInPlace(const SoPath& path, SoNode* by)
{
    SbString part;
    if (SoBaseKit* kit = kitOf(path, part))
        return kit->setPart(part, by);
    SoNode* above = path.getLength() > 1 ? path.getNodeFromTail(1) : nullptr;
    if (!above || !above->isOfType(SoGroup::getClassTypeId()))
        return false;
    return static_cast<SoGroup*>(above)->replaceChild(path.getIndexFromTail(0), by);
}

template <class Visit>
void forCommonFields(const SoNode& from, const SoNode& to, const Visit& visit)
{
    for (SoField* field : from.getFields()) {
        SoField* same = to.getField(from.getFieldName(field));
        if (same && same->getTypeId() == field->getTypeId())
            visit(*field, *same);
    }
}

} // namespace

bool SoManip::replaceNode(SoPath* path, SoNode* by)
{
    const SoRef<SoNode> held(by);
    const SoRef<SoPath> way(path);
    if (!by || !path || path->getLength() < 2)
        return false;
    const SoRef<SoNode> old(path->getTail());
    if (old.get() == by)
        return true;
    forCommonFields(*old, *by, [](const SoField& from, SoField& to) {
        to.copyFrom(from);
        to.setDefault(from.isDefault());
        to.setIgnored(from.isIgnored());
    });
    by->setOverride(old->isOverride());
    if (!putInPlace(*path, by))
        return false;
    // Only now, so that nothing is changed outside where the place was refused.
    forCommonFields(*old, *by, [](const SoField& from, SoField& to) {
        if (SoField* master = from.getConnectedField()) {
            to.connectFrom(master);
            to.enableConnection(from.isConnectionEnabled());
        }
        for (SoField* follower : from.getFollowers())
            follower->connectFrom(&to);
    });
    const SbName name = old->getName();
    if (name.getLength() > 0) {
        old->setName(SbName());
        by->setName(name);
    }
    return true;
}

bool SoManip::replaceManip(SoPath* path, SoNode* by)
{
    const SoRef<SoNode> held(by);
    const SoRef<SoPath> way(path);
    if (!path || !path->getTail() || !isManip(path->getTail()))
        return false;
    const SoRef<SoNode> plain(by ? by : SoNode::create(plainTypeOf(path->getTail()->getTypeId())));
    return replaceNode(path, plain.get());
}

bool SoManip::isManip(const SoNode* node)
{
    return node && !plainTypeOf(node->getTypeId()).isBad();
}
