#include <kalmyr/nodes/SoMaterial.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>

SO_NODE_SOURCE(SoMaterial)

SoMaterial::SoMaterial()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(ambientColor, (0.2f, 0.2f, 0.2f));
    SO_ADD_FIELD(diffuseColor, (0.8f, 0.8f, 0.8f));
    SO_ADD_FIELD(specularColor, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(emissiveColor, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(shininess, (0.2f));
    SO_ADD_FIELD(transparency, (0.0f));
}

SoMaterial::~SoMaterial() = default;

void SoMaterial::initClass()
{
    SO_NODE_INIT_CLASS(SoMaterial, SoNode, "Material");
}

void SoMaterial::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL))
        return;
    auto& element = state->write<SoMaterialElement>();
    auto& v = element.value();
    bool complete = true;
    const auto isSet = [&complete](const SoMField& field) {
        const bool set = !field.isIgnored() && field.getNum() > 0;
        complete = complete && set;
        return set;
    };
    if (isSet(ambientColor))
        v.ambient = ambientColor[0];
    if (isSet(specularColor))
        v.specular = specularColor[0];
    if (isSet(emissiveColor))
        v.emissive = emissiveColor[0];
    if (isSet(shininess))
        v.shininess = shininess[0];
    if (isSet(diffuseColor)) {
        v.diffuse = diffuseColor.getValues();
        v.numDiffuse = diffuseColor.getNum();
    }
    if (isSet(transparency)) {
        v.transparency = transparency.getValues();
        v.numTransparency = transparency.getNum();
    }
    if (complete)
        element.setBy(this);
    else
        element.accumulatedBy(this);
}
