#include <kalmyr/elements/SoMatrixElements.h>

int SoModelMatrixElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

void SoModelMatrixElement::makeIdentity(SoState* state, const SoNode* node)
{
    auto& element = state->write<SoModelMatrixElement>();
    element.value() = SbMatrix::identity();
    element.m_node = node;
    element.m_valueId = 0; // equal to the default, so caches may take it for that
}

void SoModelMatrixElement::set(SoState* state, const SoNode* node, const SbMatrix& matrix)
{
    state->write<SoModelMatrixElement>().set(node, matrix);
}

void SoModelMatrixElement::mult(SoState* state, const SoNode* node, const SbMatrix& matrix)
{
    auto& element = state->write<SoModelMatrixElement>();
    element.value().multLeft(matrix);
    element.accumulatedBy(node);
}

int SoTextureMatrixElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

void SoTextureMatrixElement::mult(SoState* state, const SoNode* node, const SbMatrix& matrix)
{
    auto& element = state->write<SoTextureMatrixElement>();
    element.value().multLeft(matrix);
    element.accumulatedBy(node);
}
