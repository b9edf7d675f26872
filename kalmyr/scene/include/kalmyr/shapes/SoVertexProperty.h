#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

class SoState;

/// Positions, normals, texture coordinates and colours of one vertex shape, in its vertexProperty
/// field, or of the vertex shapes that follow when it stands among the children. An empty field
/// leaves to the traversal state what it would have set.
class KALMYR_API SoVertexProperty : public SoNode {
    SO_NODE_HEADER(SoVertexProperty)

public:
    enum Binding {
        OVERALL = 2,
        PER_PART = 3,
        PER_PART_INDEXED = 4,
        PER_FACE = 5,
        PER_FACE_INDEXED = 6,
        PER_VERTEX = 7,
        PER_VERTEX_INDEXED = 8
    };

    SoVertexProperty();
    static void initClass();

    SoMFVec3f vertex;
    SoMFVec3f normal;
    SoMFVec2f texCoord;
    SoMFUInt32 orderedRGBA; ///< 0xRRGGBBAA
    SoSFEnum normalBinding;
    SoSFEnum materialBinding;

    void doAction(SoAction* action) override;

protected:
    ~SoVertexProperty() override;

private:
    void setColors(SoState* state);

    void unpack();

    std::uint64_t m_unpackedId = 0; ///< change id that the arrays belong to
    std::vector<SbColor> m_colors;
    std::vector<float> m_transparencies;
};
