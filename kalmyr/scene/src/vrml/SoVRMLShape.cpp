#include <kalmyr/vrml/SoVRMLShape.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/vrml/SoVRMLAppearance.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>
#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLProto.h>

namespace {

constexpr SbColor kWhite(1, 1, 1);

SoLightModelValue unlit()
{
    return {SoLightModelValue::BASE_COLOR};
}

/// Sets the look of a shape before its appearance says otherwise.
void setPlainLook(SoState* state, const SoNode* shape)
{
    if (SoOverrideElement::maySet(state, shape, SoOverrideElement::LIGHT_MODEL))
        state->write<SoLightModelElement>().set(shape, unlit());
    if (SoOverrideElement::maySet(state, shape, SoOverrideElement::TEXTURE))
        SoLookExtrasElement::clearTextures(state, shape);
    if (!SoOverrideElement::maySet(state, shape, SoOverrideElement::MATERIAL))
        return;
    SoMaterialValues plain;
    plain.diffuse = &kWhite;
    plain.numDiffuse = 1;
    state->write<SoMaterialElement>().set(shape, plain);
}

/// Lines and points shine by themselves.
void setLineLook(SoState* state, const SoNode* shape)
{
    if (SoOverrideElement::maySet(state, shape, SoOverrideElement::LIGHT_MODEL))
        state->write<SoLightModelElement>().set(shape, unlit());
    if (!SoOverrideElement::maySet(state, shape, SoOverrideElement::MATERIAL))
        return;
    auto& material = state->write<SoMaterialElement>();
    if (material.value().diffuse == &kWhite)
        return;
    // The element itself keeps the colour that its value points to.
    auto& values = material.value();
    values.diffuse = &values.emissive;
    values.numDiffuse = 1;
    material.accumulatedBy(shape);
}

} // namespace

SO_NODE_SOURCE(SoVRMLShape)

SoVRMLShape::SoVRMLShape()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(appearance);
    SO_VRML_EXPOSED_EMPTY(geometry);
}

SoVRMLShape::~SoVRMLShape() = default;

void SoVRMLShape::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLShape, SoNode, "VRMLShape");
}

void SoVRMLShape::doAction(SoAction* action)
{
    SoNode* shown = geometry.isIgnored() ? nullptr : geometry.getValue();
    SoNode* look = appearance.isIgnored() ? nullptr : appearance.getValue();
    SoState* state = action->getState();
    state->push();
    setPlainLook(state, this);
    if (look)
        action->traverse(look, -1);
    if (shown) {
        const SoNode* kind = SoVRMLProtoInstance::resolve(shown);
        if (kind && kind->isOfType(SoVRMLGeometry::getClassTypeId())
            && !static_cast<const SoVRMLGeometry*>(kind)->isLit())
            setLineLook(state, this);
        action->traverse(shown, -1);
    }
    state->pop();
}
