#pragma once

#include <kalmyr/shapes/SoNurbsSurfaceShape.h>

/// A NURBS surface whose control points are the coordinates that it names.
class KALMYR_API SoIndexedNurbsSurface : public SoNurbsSurfaceShape {
    SO_NODE_HEADER(SoIndexedNurbsSurface)

public:
    SoIndexedNurbsSurface();
    static void initClass();

    SoMFInt32 coordIndex;
    SoMFInt32 textureCoordIndex; ///< empty: in order

protected:
    ~SoIndexedNurbsSurface() override;

    std::span<const std::int32_t> getPointIndices() const override { return coordIndex.values(); }
    std::span<const std::int32_t> getTexturePointIndices() const override
    {
        return textureCoordIndex.values();
    }
};
