#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/elements/SoState.h>

/// Object space to world space (row vectors: point * matrix). A node may set or multiply another
/// matrix at every visit: the value id depends on the matrix.
class KALMYR_API SoModelMatrixElement final
    : public SoValueElement<SoModelMatrixElement, SbMatrix> {
public:
    static int getStackIndex();
    static void makeIdentity(SoState* state, const SoNode* node);
    using SoValueElement::set;
    static void set(SoState* state, const SoNode* node, const SbMatrix& matrix);
    /// matrix * present: the new transformation applies first.
    static void mult(SoState* state, const SoNode* node, const SbMatrix& matrix);
    static const SbMatrix& get(SoState* state)
    {
        return state->get<SoModelMatrixElement>().value();
    }
};

/// Applied to texture coordinates.
class KALMYR_API SoTextureMatrixElement final
    : public SoValueElement<SoTextureMatrixElement, SbMatrix> {
public:
    static int getStackIndex();
    static void mult(SoState* state, const SoNode* node, const SbMatrix& matrix);
    static const SbMatrix& get(SoState* state)
    {
        return state->get<SoTextureMatrixElement>().value();
    }
};
