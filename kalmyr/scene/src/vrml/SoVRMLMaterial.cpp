#include <kalmyr/vrml/SoVRMLMaterial.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLMaterial)

SoVRMLMaterial::SoVRMLMaterial()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(ambientIntensity, (0.2f));
    SO_VRML_EXPOSED(diffuseColor, (0.8f, 0.8f, 0.8f));
    SO_VRML_EXPOSED(emissiveColor, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(shininess, (0.2f));
    SO_VRML_EXPOSED(specularColor, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(transparency, (0.0f));
}

SoVRMLMaterial::~SoVRMLMaterial() = default;

void SoVRMLMaterial::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMaterial, SoNode, "VRMLMaterial");
}

void SoVRMLMaterial::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::MATERIAL))
        return;
    const SoMaterialValues defaults;
    SoMaterialValues values;
    values.takesEnvironment = false;
    const SbColor diffuse =
        diffuseColor.isIgnored() ? defaults.getDiffuse() : diffuseColor.getValue();
    if (!ambientIntensity.isIgnored())
        values.ambient = diffuse * ambientIntensity.getValue();
    if (!emissiveColor.isIgnored())
        values.emissive = emissiveColor.getValue();
    if (!specularColor.isIgnored())
        values.specular = specularColor.getValue();
    if (!shininess.isIgnored())
        values.shininess = shininess.getValue();
    if (!diffuseColor.isIgnored()) {
        values.diffuse = &diffuseColor.getValue();
        values.numDiffuse = 1;
    }
    if (!transparency.isIgnored()) {
        values.transparency = &transparency.getValue();
        values.numTransparency = 1;
    }
    state->write<SoMaterialElement>().set(this, values);
}
