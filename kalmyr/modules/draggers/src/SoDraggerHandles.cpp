// The looks of the handles of draggers.
#include <kalmyr/draggers/SoDragger.h>

#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoPickStyle.h>
#include <kalmyr/nodes/SoSwitch.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoFaceSet.h>
#include <kalmyr/shapes/SoLineSet.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/shapes/SoVertexProperty.h>

namespace {

const SbVec3f kActiveColor(1, 0.85f, 0.1f);

/// Shaded where there is light, and seen where there is none.
SoMaterial* makeMaterial(const SbVec3f& color, float transparency)
{
    auto* material = new SoMaterial;
    material->ambientColor = SbColor(0, 0, 0);
    material->diffuseColor = SbColor(color[0] * 0.6f, color[1] * 0.6f, color[2] * 0.6f);
    material->emissiveColor = SbColor(color[0] * 0.4f, color[1] * 0.4f, color[2] * 0.4f);
    material->transparency = transparency;
    return material;
}

/// For what is drawn without light.
SoMaterial* makePlainMaterial(const SbVec3f& color, float transparency)
{
    auto* material = new SoMaterial;
    material->diffuseColor = SbColor(color[0], color[1], color[2]);
    material->transparency = transparency;
    return material;
}

template <class Shape>
Shape* makeShape(const std::vector<std::vector<SbVec3f>>& runs)
{
    auto* points = new SoVertexProperty;
    auto* shape = new Shape;
    int count = 0, place = 0;
    for (const std::vector<SbVec3f>& run : runs) {
        points->vertex.setValues(place, static_cast<int>(run.size()), run.data());
        place += static_cast<int>(run.size());
        shape->numVertices.set1Value(count++, static_cast<int>(run.size()));
    }
    shape->vertexProperty = points;
    return shape;
}

SoShape* makeKnob(int kind)
{
    if (kind == 0) {
        auto* cone = new SoCone;
        cone->height = 2.5f;
        cone->bottomRadius = 0.8f;
        return cone;
    }
    if (kind == 1) {
        auto* cube = new SoCube;
        cube->width = cube->height = cube->depth = 1.4f;
        return cube;
    }
    auto* ball = new SoSphere;
    ball->radius = 0.8f;
    return ball;
}

} // namespace

SoDragHandle* SoDragger::addHandle(const Part& part, float transparency)
{
    auto* handle = new SoDragHandle;
    handle->part = SbName(part.name);
    handle->motion = part.motion;
    handle->axis = part.axis;
    const bool isPlain = transparency >= 0;
    auto* looks = new SoSwitch;
    looks->whichChild = 0;
    looks->addChild(isPlain ? makePlainMaterial(part.color, transparency)
                            : makeMaterial(part.color, 0));
    looks->addChild(isPlain ? makePlainMaterial(kActiveColor, transparency * 0.8f)
                            : makeMaterial(kActiveColor, 0));
    handle->addChild(looks);
    if (part.motion == SoDragHandle::NONE) {
        auto* through = new SoPickStyle;
        through->style = SoPickStyle::UNPICKABLE;
        handle->addChild(through);
    }
    if (isPlain) {
        auto* model = new SoLightModel;
        model->model = SoLightModel::BASE_COLOR;
        handle->addChild(model);
    }
    static_cast<SoGroup*>(handles.getValue())->addChild(handle);
    return handle;
}

SoDragHandle* SoDragger::addKnob(const Part& part, Knob knob, const SbVec3f& position,
                                 const SbVec3f& direction, float size)
{
    SoDragHandle* handle = addHandle(part, -1);
    handle->position = position;
    handle->direction = direction;
    handle->size = size;
    handle->addChild(makeKnob(knob));
    return handle;
}

SoDragHandle* SoDragger::addLines(const Part& part, const std::vector<std::vector<SbVec3f>>& lines)
{
    SoDragHandle* handle = addHandle(part, 0);
    handle->addChild(makeShape<SoLineSet>(lines));
    return handle;
}

SoDragHandle* SoDragger::addFaces(const Part& part, const std::vector<std::vector<SbVec3f>>& faces)
{
    SoDragHandle* handle = addHandle(part, kFaceTransparency);
    handle->addChild(makeShape<SoFaceSet>(faces));
    return handle;
}

SoDragHandle* SoDragger::addBall(const Part& part)
{
    SoDragHandle* handle = addHandle(part, kFaceTransparency);
    handle->addChild(new SoSphere);
    return handle;
}

void SoDragger::addArrow(const Part& part, Knob knob, const SbVec3f& axis, bool bothSides)
{
    // Handles that scale cannot be taken near the middle, where nothing moves.
    Part shaft = part;
    if (part.motion == SoDragHandle::SCALE_LINE)
        shaft.motion = SoDragHandle::NONE;
    addLines(shaft, {{bothSides ? -axis : SbVec3f(), axis}});
    addKnob(part, knob, axis, axis);
    if (bothSides)
        addKnob(part, knob, -axis, -axis);
}
