#include <kalmyr/nodes/SoTexture3.h>

#include <kalmyr/actions/SoAction.h>

namespace {

constexpr SoEnumEntry kWraps[] = {
    {"REPEAT", SoStackTexture::REPEAT},
    {"CLAMP", SoStackTexture::CLAMP},
};

} // namespace

SO_NODE_SOURCE(SoTexture3)

SoTexture3::SoTexture3()
{
    SO_NODE_CONSTRUCTOR(SoStackTexture);
    SO_ADD_FIELD(wrapR, (REPEAT));
    wrapR.setEnums(kWraps);
    SO_ADD_FIELD(wrapS, (REPEAT));
    wrapS.setEnums(kWraps);
    SO_ADD_FIELD(wrapT, (REPEAT));
    wrapT.setEnums(kWraps);
}

SoTexture3::~SoTexture3() = default;

void SoTexture3::initClass()
{
    SO_NODE_INIT_CLASS(SoTexture3, SoStackTexture, "Texture3");
}

void SoTexture3::doAction(SoAction* action)
{
    set(action, SoTextureStage::VOLUME, wrapS.getValue(), wrapT.getValue(), wrapR.getValue());
}

bool SoTexture3::isUsable(const SbImage&, SbString&) const
{
    return true;
}
