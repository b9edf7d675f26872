#include <kalmyr/vrml/SoVRMLAppearance.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoTextureElement.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

namespace {

constexpr SbColor kWhite(1, 1, 1);
constexpr int kColouredComponents = 3;

SoNode* valueOf(const SoSFNode& field)
{
    return field.isIgnored() ? nullptr : field.getValue();
}

} // namespace

SO_NODE_SOURCE(SoVRMLAppearance)

SoVRMLAppearance::SoVRMLAppearance()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(material);
    SO_VRML_EXPOSED_EMPTY(texture);
    SO_VRML_EXPOSED_EMPTY(textureTransform);
}

SoVRMLAppearance::~SoVRMLAppearance() = default;

void SoVRMLAppearance::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLAppearance, SoNode, "VRMLAppearance");
}

void SoVRMLAppearance::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (SoNode* node = valueOf(material)) {
        if (SoOverrideElement::maySet(state, this, SoOverrideElement::LIGHT_MODEL))
            state->write<SoLightModelElement>().set(this, {SoLightModelValue::PHONG});
        action->traverse(node, -1);
    }
    if (SoNode* node = valueOf(texture)) {
        action->traverse(node, -1);
        const SoTextureValues& shown = state->get<SoTextureElement>().value();
        const bool coloured = shown.image.getComponents() >= kColouredComponents
                              && shown.model == SoTextureValues::SURFACE;
        if (coloured && SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL)) {
            auto& element = state->write<SoMaterialElement>();
            element.value().diffuse = &kWhite;
            element.value().numDiffuse = 1;
            element.accumulatedBy(this);
        }
    }
    if (SoNode* node = valueOf(textureTransform))
        action->traverse(node, -1);
}
