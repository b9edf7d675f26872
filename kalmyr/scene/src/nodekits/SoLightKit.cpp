#include <kalmyr/nodekits/SoLightKit.h>

#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/lights/SoLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoTransformSeparator.h>

SO_KIT_SOURCE(SoLightKit)

SoLightKit::SoLightKit()
{
    SO_NODE_CONSTRUCTOR(SoBaseKit);
    SO_KIT_PART(transformGroup);
    SO_KIT_PART(transform);
    SO_KIT_PART(light);
    SO_KIT_PART(iconSeparator);
    SO_KIT_PART(icon);
    SO_KIT_MAKE_PARTS();
}

SoLightKit::~SoLightKit() = default;

void SoLightKit::initClass()
{
    SO_KIT_INIT_CLASS(SoLightKit, SoBaseKit, "LightKit");
    s_catalog->addGroup("transformGroup", SoTransformSeparator::getClassTypeId(), {"this", ""},
                        true);
    s_catalog->addPart("transform", SoTransform::getClassTypeId(), SoTransform::getClassTypeId(),
                       {"transformGroup", ""});
    s_catalog->addPart("light", SoLight::getClassTypeId(), SoDirectionalLight::getClassTypeId(),
                       {"transformGroup", ""});
    s_catalog->addGroup("iconSeparator", SoSeparator::getClassTypeId(), {"transformGroup", ""},
                        false);
    s_catalog->addPart("icon", SoNode::getClassTypeId(), SoSeparator::getClassTypeId(),
                       {"iconSeparator", ""});
    s_catalog->setNullByDefault("light", false);
}
