#include <kalmyr/nodekits/SoAppearanceKit.h>

#include <kalmyr/nodes/SoComplexity.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoEnvironment.h>
#include <kalmyr/nodes/SoFont.h>
#include <kalmyr/nodes/SoLightModel.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoTexture2.h>

SO_KIT_SOURCE(SoAppearanceKit)

SoAppearanceKit::SoAppearanceKit()
{
    SO_NODE_CONSTRUCTOR(SoBaseKit);
    SO_KIT_PART(lightModel);
    SO_KIT_PART(environment);
    SO_KIT_PART(drawStyle);
    SO_KIT_PART(material);
    SO_KIT_PART(complexity);
    SO_KIT_PART(texture2);
    SO_KIT_PART(font);
    SO_KIT_MAKE_PARTS();
}

SoAppearanceKit::~SoAppearanceKit() = default;

void SoAppearanceKit::initClass()
{
    SO_KIT_INIT_CLASS(SoAppearanceKit, SoBaseKit, "AppearanceKit");
    s_catalog->addPart("lightModel", SoLightModel::getClassTypeId(), SoLightModel::getClassTypeId(),
                       {"this", ""});
    s_catalog->addPart("environment", SoEnvironment::getClassTypeId(),
                       SoEnvironment::getClassTypeId(), {"this", ""});
    s_catalog->addPart("drawStyle", SoDrawStyle::getClassTypeId(), SoDrawStyle::getClassTypeId(),
                       {"this", ""});
    s_catalog->addPart("material", SoMaterial::getClassTypeId(), SoMaterial::getClassTypeId(),
                       {"this", ""});
    s_catalog->addPart("complexity", SoComplexity::getClassTypeId(), SoComplexity::getClassTypeId(),
                       {"this", ""});
    s_catalog->addPart("texture2", SoTexture2::getClassTypeId(), SoTexture2::getClassTypeId(),
                       {"this", ""});
    s_catalog->addPart("font", SoFont::getClassTypeId(), SoFont::getClassTypeId(), {"this", ""});
}
