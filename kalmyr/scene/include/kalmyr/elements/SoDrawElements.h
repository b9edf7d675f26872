#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/elements/SoState.h>

/// How shapes are drawn.
struct SoDrawStyleValues {
    enum Style { FILLED = 0, LINES = 1, POINTS = 2, INVISIBLE = 3 };
    Style style = FILLED;
    float pointSize = 0; ///< pixels; 0: the default of 1
    float lineWidth = 0; ///< pixels; 0: the default of 1
    unsigned short linePattern = 0xffff;
};
class KALMYR_API SoDrawStyleElement final
    : public SoValueElement<SoDrawStyleElement, SoDrawStyleValues> {
public:
    static int getStackIndex();
    static const SoDrawStyleValues& get(SoState* state)
    {
        return state->get<SoDrawStyleElement>().value();
    }
};

/// The properties of the faces that follow; numbers as in scene files.
struct SoShapeHintsValues {
    enum VertexOrdering { UNKNOWN_ORDERING = 0, CLOCKWISE = 1, COUNTERCLOCKWISE = 2 };
    enum ShapeType { UNKNOWN_SHAPE_TYPE = 0, SOLID = 1 };
    enum FaceType { UNKNOWN_FACE_TYPE = 0, CONVEX = 1 };
    VertexOrdering vertexOrdering = UNKNOWN_ORDERING;
    ShapeType shapeType = UNKNOWN_SHAPE_TYPE;
    FaceType faceType = CONVEX;
    float creaseAngle = 0; ///< radians; edges between faces at a smaller angle are shaded smooth
};
class KALMYR_API SoShapeHintsElement final
    : public SoValueElement<SoShapeHintsElement, SoShapeHintsValues> {
public:
    static int getStackIndex();
    static const SoShapeHintsValues& get(SoState* state)
    {
        return state->get<SoShapeHintsElement>().value();
    }
};

/// Tessellation effort of curved shapes, 0 to 1; negative: not set, taken as 0.5.
struct SoComplexityValue {
    float value = -1;
};
class KALMYR_API SoComplexityElement final
    : public SoValueElement<SoComplexityElement, SoComplexityValue> {
public:
    static int getStackIndex();
    static float get(SoState* state)
    {
        const float v = state->get<SoComplexityElement>().value().value;
        return v < 0 ? 0.5f : v;
    }
};

/// Lighting on (PHONG) or colours as they are (BASE_COLOR).
struct SoLightModelValue {
    enum Model { BASE_COLOR = 0, PHONG = 1 };
    Model model = PHONG;
};
class KALMYR_API SoLightModelElement final
    : public SoValueElement<SoLightModelElement, SoLightModelValue> {
public:
    static int getStackIndex();
};

/// How shapes are picked; numbers as in scene files.
struct SoPickStyleValue {
    enum Style { SHAPE = 0, BOUNDING_BOX = 1, UNPICKABLE = 2 };
    Style style = SHAPE;
};
class KALMYR_API SoPickStyleElement final
    : public SoValueElement<SoPickStyleElement, SoPickStyleValue> {
public:
    static int getStackIndex();
};

/// Child chosen by the last switch, for switches that inherit it.
class KALMYR_API SoSwitchElement final : public SoValueElement<SoSwitchElement, int> {
public:
    static int getStackIndex();
};

/// Elements that a node with its override flag set has locked, as bits.
class KALMYR_API SoOverrideElement final : public SoValueElement<SoOverrideElement, unsigned> {
public:
    enum Bit {
        MATERIAL = 1,
        DRAW_STYLE = 2,
        SHAPE_HINTS = 4,
        COMPLEXITY = 8,
        LIGHT_MODEL = 16,
        MATERIAL_BINDING = 32,
        NORMAL_BINDING = 64,
        PICK_STYLE = 128,
        TEXTURE = 256,
        NORMAL = 512,
        VIEW = 1024
    };
    static int getStackIndex();
    /// True when `node` may set the element: it is not locked, or the node overrides itself.
    /// Locks it when the node has its override flag set.
    static bool maySet(SoState* state, const SoNode* node, Bit bit);
};
