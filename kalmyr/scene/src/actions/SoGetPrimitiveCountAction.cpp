#include <kalmyr/actions/SoGetPrimitiveCountAction.h>

#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoViewElements.h>

SO_ACTION_SOURCE(SoGetPrimitiveCountAction, SoAction, "GetPrimitiveCountAction")

void SoGetPrimitiveCountAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
}

SoGetPrimitiveCountAction::SoGetPrimitiveCountAction()
    : SoGetPrimitiveCountAction(SbViewportRegion())
{
}

SoGetPrimitiveCountAction::SoGetPrimitiveCountAction(const SbViewportRegion& region)
    : m_region(region)
{
}

void SoGetPrimitiveCountAction::beginTraversal(SoNode*)
{
    m_triangles = m_lines = m_points = 0;
    getState()->write<SoViewportRegionElement>().set(nullptr, m_region);
}
