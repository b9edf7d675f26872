#include <kalmyr/nodes/SoTexture2.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>

namespace {

constexpr SoEnumEntry kWraps[] = {
    {"REPEAT", SoTexture2::REPEAT},
    {"CLAMP", SoTexture2::CLAMP},
};

constexpr SoEnumEntry kModels[] = {
    {"MODULATE", SoTexture2::MODULATE},
    {"DECAL", SoTexture2::DECAL},
    {"BLEND", SoTexture2::BLEND},
    {"REPLACE", SoTexture2::REPLACE},
};

} // namespace

SO_NODE_SOURCE(SoTexture2)

SoTexture2::SoTexture2()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(filename, (""));
    SO_ADD_EMPTY_FIELD(image);
    SO_ADD_FIELD(wrapS, (REPEAT));
    wrapS.setEnums(kWraps);
    SO_ADD_FIELD(wrapT, (REPEAT));
    wrapT.setEnums(kWraps);
    SO_ADD_FIELD(model, (MODULATE));
    model.setEnums(kModels);
    SO_ADD_FIELD(blendColor, (0.0f, 0.0f, 0.0f));
}

SoTexture2::~SoTexture2() = default;

void SoTexture2::initClass()
{
    SO_NODE_INIT_CLASS(SoTexture2, SoNode, "Texture2");
}

void SoTexture2::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    setDirectory(static_cast<const SoTexture2*>(from)->getDirectory());
}

const SbImage& SoTexture2::getPicture()
{
    const SbString& name = filename.getValue();
    return m_file.get(filename.isIgnored() ? SbString() : name, image.getValue(), "texture");
}

void SoTexture2::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::TEXTURE))
        return;
    SoTextureValues v;
    v.image = getPicture();
    v.wrapS = static_cast<SoTextureValues::Wrap>(wrapS.getValue());
    v.wrapT = static_cast<SoTextureValues::Wrap>(wrapT.getValue());
    v.model = static_cast<SoTextureValues::Model>(model.getValue());
    v.blendColor = blendColor.getValue();
    SoLookExtrasElement::setTexture(state, this, v);
}
