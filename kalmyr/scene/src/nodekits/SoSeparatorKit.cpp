#include <kalmyr/nodekits/SoSeparatorKit.h>

#include <kalmyr/nodekits/SoAppearanceKit.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoPickStyle.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTexture2Transform.h>
#include <kalmyr/nodes/SoTransform.h>

SO_KIT_SOURCE(SoSeparatorKit)

SoSeparatorKit::SoSeparatorKit()
{
    SO_NODE_CONSTRUCTOR(SoBaseKit);
    SO_KIT_PART(topSeparator);
    SO_KIT_PART(pickStyle);
    SO_KIT_PART(appearance);
    SO_KIT_PART(transform);
    SO_KIT_PART(texture2Transform);
    SO_KIT_PART(childList);
    SO_KIT_MAKE_PARTS();
}

SoSeparatorKit::~SoSeparatorKit() = default;

void SoSeparatorKit::initClass()
{
    SO_KIT_INIT_CLASS(SoSeparatorKit, SoBaseKit, "SeparatorKit");
    s_catalog->addGroup("topSeparator", SoSeparator::getClassTypeId(), {"this", ""}, true);
    s_catalog->addPart("pickStyle", SoPickStyle::getClassTypeId(), SoPickStyle::getClassTypeId(),
                       {"topSeparator", ""});
    s_catalog->addPart("appearance", SoAppearanceKit::getClassTypeId(),
                       SoAppearanceKit::getClassTypeId(), {"topSeparator", ""});
    s_catalog->addPart("transform", SoTransform::getClassTypeId(), SoTransform::getClassTypeId(),
                       {"topSeparator", ""});
    s_catalog->addPart("texture2Transform", SoTexture2Transform::getClassTypeId(),
                       SoTexture2Transform::getClassTypeId(), {"topSeparator", ""});
    // Any kit may stand below; asked for an entry, the list makes a separator kit.
    s_catalog->addListPart("childList", SoNodeKitListPart::getClassTypeId(),
                           SoGroup::getClassTypeId(),
                           {getClassTypeId(), SoBaseKit::getClassTypeId()}, {"topSeparator", ""});
}
