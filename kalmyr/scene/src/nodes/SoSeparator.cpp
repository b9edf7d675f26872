#include <kalmyr/nodes/SoSeparator.h>

#include <kalmyr/actions/SoBoundingBoxCache.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/actions/SoRayPickAction.h>

#include "core/CacheLock.h"

namespace {

constexpr SoEnumEntry kCacheEnabled[] = {
    {"OFF", SoSeparator::OFF},
    {"ON", SoSeparator::ON},
    {"AUTO", SoSeparator::AUTO},
};

void measureSeparator(SoAction* action, SoNode* node)
{
    static_cast<SoSeparator*>(node)->measure(static_cast<SoGetBoundingBoxAction*>(action));
}

void pickSeparator(SoAction* action, SoNode* node)
{
    static_cast<SoSeparator*>(node)->rayPick(static_cast<SoRayPickAction*>(action));
}

} // namespace

SO_NODE_SOURCE(SoSeparator)

SoSeparator::SoSeparator()
{
    SO_NODE_CONSTRUCTOR(SoGroup);
    SO_ADD_FIELD(renderCaching, (AUTO));
    SO_ADD_FIELD(boundingBoxCaching, (AUTO));
    SO_ADD_FIELD(renderCulling, (AUTO));
    SO_ADD_FIELD(pickCulling, (AUTO));
    renderCaching.setEnums(kCacheEnabled);
    boundingBoxCaching.setEnums(kCacheEnabled);
    renderCulling.setEnums(kCacheEnabled);
    pickCulling.setEnums(kCacheEnabled);
}

SoSeparator::SoSeparator(int numChildren) : SoSeparator()
{
    m_children.reserve(numChildren);
}

SoSeparator::~SoSeparator() = default;

void SoSeparator::initClass()
{
    SO_NODE_INIT_CLASS(SoSeparator, SoGroup, "Separator");
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), measureSeparator);
    SoRayPickAction::addMethod(getClassTypeId(), pickSeparator);
}

void SoSeparator::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    action->traverseChildren(m_children);
    state->pop();
}

void SoSeparator::measure(SoGetBoundingBoxAction* action)
{
    const bool caching = boundingBoxCaching.getValue() != OFF;
    {
        const kalmyr::detail::CacheLock lock;
        if (!action->open(this, caching ? m_boxCache.get() : nullptr))
            return;
    }
    action->measureChildren(m_children, caching ? &m_boxCache : nullptr);
    const kalmyr::detail::CacheLock lock;
    action->close(this, caching ? &m_boxCache : nullptr);
}

bool SoSeparator::noteChange(const SoNotification& notification)
{
    if (m_boxCache)
        m_boxCache->noteChange(notification);
    return SoGroup::noteChange(notification);
}

bool SoSeparator::isCulled(SoRayPickAction* action) const
{
    const kalmyr::detail::CacheLock lock;
    return action->isCulled(this, m_boxCache.get());
}

void SoSeparator::rayPick(SoRayPickAction* action)
{
    const bool culling = pickCulling.getValue() != OFF;
    if (!culling || !isCulled(action))
        doAction(action);
}
