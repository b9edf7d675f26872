#include <kalmyr/nodekits/SoWrapperKit.h>

#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>

SO_KIT_SOURCE(SoWrapperKit)

SoWrapperKit::SoWrapperKit()
{
    SO_NODE_CONSTRUCTOR(SoSeparatorKit);
    SO_KIT_PART(localTransform);
    SO_KIT_PART(contentsSeparator);
    SO_KIT_PART(contents);
    SO_KIT_MAKE_PARTS();
}

SoWrapperKit::~SoWrapperKit() = default;

void SoWrapperKit::initClass()
{
    SO_KIT_INIT_CLASS(SoWrapperKit, SoSeparatorKit, "WrapperKit");
    s_catalog->addGroup("contentsSeparator", SoSeparator::getClassTypeId(),
                        {"topSeparator", "childList"}, false);
    s_catalog->addPart("localTransform", SoTransform::getClassTypeId(),
                       SoTransform::getClassTypeId(), {"contentsSeparator", ""});
    s_catalog->addPart("contents", SoNode::getClassTypeId(), SoSeparator::getClassTypeId(),
                       {"contentsSeparator", ""});
}
