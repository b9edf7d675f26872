#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// Says which properties the faces that follow have, and from which angle edges are sharp.
class KALMYR_API SoShapeHints : public SoNode {
    SO_NODE_HEADER(SoShapeHints)

public:
    enum VertexOrdering { UNKNOWN_ORDERING = 0, CLOCKWISE = 1, COUNTERCLOCKWISE = 2 };
    enum ShapeType { UNKNOWN_SHAPE_TYPE = 0, SOLID = 1 };
    enum FaceType { UNKNOWN_FACE_TYPE = 0, CONVEX = 1 };

    SoShapeHints();
    static void initClass();

    SoSFEnum vertexOrdering;
    SoSFEnum shapeType;
    SoSFEnum faceType;
    SoSFFloat creaseAngle; ///< radians; edges between faces at a smaller angle are shaded smooth

    void doAction(SoAction* action) override;

protected:
    ~SoShapeHints() override;
};
