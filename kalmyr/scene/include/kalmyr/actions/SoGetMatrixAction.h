#pragma once

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbViewportRegion.h>

/// Finds the transformation from the space of a path's tail to that of its head, that of the tail
/// itself included; applied to a node, that of the node alone.
class KALMYR_API SoGetMatrixAction : public SoAction {
    SO_ACTION_HEADER(SoGetMatrixAction)

public:
    SoGetMatrixAction();
    explicit SoGetMatrixAction(const SbViewportRegion& region);

    using SoAction::apply;
    void apply(SoNode* node) override;

    /// Tail to head: point * matrix.
    const SbMatrix& getMatrix() const { return m_matrix; }
    /// Head to tail; the identity when there is no inverse.
    const SbMatrix& getInverse() const { return m_inverse; }
    /// Of texture coordinates.
    const SbMatrix& getTextureMatrix() const { return m_textureMatrix; }

protected:
    void beginTraversal(SoNode* root) override;
    void endTraversal(SoNode* root) override;
    void tailReached() override;

private:
    SbViewportRegion m_region;
    SbMatrix m_matrix;
    SbMatrix m_inverse;
    SbMatrix m_textureMatrix;
};
