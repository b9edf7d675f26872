#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoVertexShape.h>

/// Base of shapes that choose positions by index. The other index fields count only for indexed
/// bindings; left at -1 or empty, coordIndex serves in their place.
class KALMYR_API SoIndexedShape : public SoVertexShape {
    SO_NODE_HEADER(SoIndexedShape)

public:
    static void initClass();

    SoMFInt32 coordIndex; ///< ended by -1 after each face, strip or line
    SoMFInt32 materialIndex;
    SoMFInt32 normalIndex;
    SoMFInt32 textureCoordIndex;

protected:
    SoIndexedShape();
    ~SoIndexedShape() override;

    Indices getIndices() const;
};
