#include <kalmyr/manips/SoManip.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodes/SoGroup.h>

namespace kalmyr::detail {

ManipDragger::ManipDragger(SoNode* owner, SoDragger* dragger, Step toNode, Step toDragger)
    : m_children(owner),
      m_dragger(dragger),
      m_toNode(std::move(toNode)),
      m_toDragger(std::move(toDragger))
{
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
    action->traverseChildren(m_children);
}

} // namespace kalmyr::detail

bool SoManip::replaceNode(SoPath* path, SoNode* by)
{
    const SoRef<SoNode> held(by);
    SoNode* above = path && path->getLength() > 1 ? path->getNodeFromTail(1) : nullptr;
    if (!by || !above || !above->isOfType(SoGroup::getClassTypeId()))
        return false;
    const SoRef<SoNode> old(path->getTail());
    const int index = path->getIndexFromTail(0);
    for (const SoField* from : old->getFields()) {
        SoField* to = by->getField(old->getFieldName(from));
        if (!to || to->getTypeId() != from->getTypeId())
            continue;
        to->copyFrom(*from);
        to->setIgnored(from->isIgnored());
        if (SoField* master = from->getConnectedField())
            to->connectFrom(master);
    }
    return static_cast<SoGroup*>(above)->replaceChild(index, by);
}
