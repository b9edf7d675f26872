#include <kalmyr/nodes/SoShapeHints.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>

namespace {

constexpr SoEnumEntry kOrderings[] = {
    {"UNKNOWN_ORDERING", SoShapeHints::UNKNOWN_ORDERING},
    {"CLOCKWISE", SoShapeHints::CLOCKWISE},
    {"COUNTERCLOCKWISE", SoShapeHints::COUNTERCLOCKWISE},
};

constexpr SoEnumEntry kShapeTypes[] = {
    {"UNKNOWN_SHAPE_TYPE", SoShapeHints::UNKNOWN_SHAPE_TYPE},
    {"SOLID", SoShapeHints::SOLID},
};

constexpr SoEnumEntry kFaceTypes[] = {
    {"UNKNOWN_FACE_TYPE", SoShapeHints::UNKNOWN_FACE_TYPE},
    {"CONVEX", SoShapeHints::CONVEX},
};

} // namespace

SO_NODE_SOURCE(SoShapeHints)

SoShapeHints::SoShapeHints()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(vertexOrdering, (UNKNOWN_ORDERING));
    vertexOrdering.setEnums(kOrderings);
    SO_ADD_FIELD(shapeType, (UNKNOWN_SHAPE_TYPE));
    shapeType.setEnums(kShapeTypes);
    SO_ADD_FIELD(faceType, (CONVEX));
    faceType.setEnums(kFaceTypes);
    SO_ADD_FIELD(creaseAngle, (0.5f));
}

SoShapeHints::~SoShapeHints() = default;

void SoShapeHints::initClass()
{
    SO_NODE_INIT_CLASS(SoShapeHints, SoNode, "ShapeHints");
}

void SoShapeHints::doAction(SoAction* action)
{
    using Values = SoShapeHintsValues;
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::SHAPE_HINTS))
        return;
    auto& element = state->write<SoShapeHintsElement>();
    auto& v = element.value();
    if (!vertexOrdering.isIgnored())
        v.vertexOrdering = static_cast<Values::VertexOrdering>(vertexOrdering.getValue());
    if (!shapeType.isIgnored())
        v.shapeType = static_cast<Values::ShapeType>(shapeType.getValue());
    if (!faceType.isIgnored())
        v.faceType = static_cast<Values::FaceType>(faceType.getValue());
    if (!creaseAngle.isIgnored())
        v.creaseAngle = creaseAngle.getValue();
    element.accumulatedBy(this);
}
