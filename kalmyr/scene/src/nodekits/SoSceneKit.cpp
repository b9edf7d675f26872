#include <kalmyr/nodekits/SoSceneKit.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/nodekits/SoCameraKit.h>
#include <kalmyr/nodekits/SoLightKit.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoSeparatorKit.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoSwitch.h>

SO_KIT_SOURCE(SoSceneKit)

SoSceneKit::SoSceneKit()
{
    SO_NODE_CONSTRUCTOR(SoBaseKit);
    SO_KIT_PART(topSeparator);
    SO_KIT_PART(cameraList);
    SO_KIT_PART(lightList);
    SO_KIT_PART(childList);
    SO_KIT_MAKE_PARTS();
}

SoSceneKit::~SoSceneKit() = default;

void SoSceneKit::initClass()
{
    SO_KIT_INIT_CLASS(SoSceneKit, SoBaseKit, "SceneKit");
    s_catalog->addGroup("topSeparator", SoSeparator::getClassTypeId(), {"this", ""}, true);
    s_catalog->addListPart("cameraList", SoNodeKitListPart::getClassTypeId(),
                           SoSwitch::getClassTypeId(), {SoCameraKit::getClassTypeId()},
                           {"topSeparator", ""});
    s_catalog->addListPart("lightList", SoNodeKitListPart::getClassTypeId(),
                           SoGroup::getClassTypeId(), {SoLightKit::getClassTypeId()},
                           {"topSeparator", ""});
    s_catalog->addListPart(
        "childList", SoNodeKitListPart::getClassTypeId(), SoGroup::getClassTypeId(),
        {SoSeparatorKit::getClassTypeId(), SoBaseKit::getClassTypeId()}, {"topSeparator", ""});
}

int SoSceneKit::getCameraNumber() const
{
    const auto* list = static_cast<const SoNodeKitListPart*>(cameraList.getValue());
    const SoNode* container = list ? list->containerNode.getValue() : nullptr;
    return container ? static_cast<const SoSwitch*>(container)->whichChild.getValue() : -1;
}

bool SoSceneKit::setCameraNumber(int number)
{
    auto* list = static_cast<SoNodeKitListPart*>(getPart("cameraList"));
    if (number < -1 || number >= list->getNumChildren()) {
        SoDebugError::post("SoSceneKit::setCameraNumber", "there is no camera %d", number);
        return false;
    }
    if (!list->containerNode.getValue() && number < 0)
        return true;
    static_cast<SoSwitch*>(list->containerNode.getValue())->whichChild.setValue(number);
    return true;
}
