#include <kalmyr/actions/SoGetMatrixAction.h>

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

SO_ACTION_SOURCE(SoGetMatrixAction, SoAction, "GetMatrixAction")

void SoGetMatrixAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
}

SoGetMatrixAction::SoGetMatrixAction() : SoGetMatrixAction(SbViewportRegion()) {}

SoGetMatrixAction::SoGetMatrixAction(const SbViewportRegion& region) : m_region(region)
{
    setPathUse(TO_TAIL);
}

void SoGetMatrixAction::apply(SoNode* node)
{
    if (!node) {
        SoAction::apply(node);
        return;
    }
    node->ref();
    {
        const SoRef<SoPath> path(new SoPath(node));
        SoAction::apply(path.get());
    }
    node->unrefNoDelete();
}

void SoGetMatrixAction::beginTraversal(SoNode*)
{
    m_matrix.makeIdentity();
    m_textureMatrix.makeIdentity();
    getState()->write<SoViewportRegionElement>().set(nullptr, m_region);
}

void SoGetMatrixAction::endTraversal(SoNode*)
{
    m_inverse = m_matrix.inverse();
}

void SoGetMatrixAction::tailReached()
{
    m_matrix = SoModelMatrixElement::get(getState());
    m_textureMatrix = SoTextureMatrixElement::get(getState());
    setTerminated(true);
}
