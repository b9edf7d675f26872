#include <kalmyr/vrml/SoVRMLExtraNodes.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLTexture.h>
#include <kalmyr/vrml/SoVRMLTextureCoordinate.h>

#include <algorithm>

namespace {

SbString entryOf(const SoMFString& field, int i)
{
    return i < field.getNum() ? field[i] : SbString();
}

/// The modes of colours and opacity in one entry; MODULATE for what is not known.
void setModes(const std::string& entry, SoTextureStage& stage)
{
    const std::size_t comma = entry.find(',');
    const auto read = [](const std::string& word, SoTextureStage::Mode& mode) {
        if (!SoTextureStage::findMode(word, mode) || mode == SoTextureStage::AS_MODEL)
            mode = SoTextureStage::MODULATE;
    };
    read(entry.substr(0, comma), stage.mode);
    stage.alphaMode = SoTextureStage::AS_MODEL;
    if (comma != std::string::npos)
        read(entry.substr(comma + 1), stage.alphaMode);
}

SoTextureStage::Source sourceOf(const SbString& word)
{
    return word == "DIFFUSE"    ? SoTextureStage::DIFFUSE
           : word == "SPECULAR" ? SoTextureStage::SPECULAR
           : word == "FACTOR"   ? SoTextureStage::FACTOR
                                : SoTextureStage::CURRENT;
}

SoTextureStage::Function functionOf(const SbString& word)
{
    return word == "COMPLEMENT"       ? SoTextureStage::COMPLEMENT
           : word == "ALPHAREPLICATE" ? SoTextureStage::ALPHAREPLICATE
                                      : SoTextureStage::NONE;
}

/// The model that comes nearest to a mode, for those who look at the first texture alone.
SoTextureValues::Model modelOf(SoTextureStage::Mode mode)
{
    return mode == SoTextureStage::REPLACE || mode == SoTextureStage::SELECTARG1
               ? SoTextureValues::REPLACE
               : SoTextureValues::MODULATE;
}

/// Traverses each node as that of a texture unit.
template <class Then>
void traverseUnits(const SoMFNode& nodes, SoNode* self, SoAction* action, Then&& then)
{
    SoState* state = action->getState();
    const int count = std::min(nodes.getNum(), SoTextureUnitElement::kMaxUnits);
    for (int unit = 0; unit < count; ++unit) {
        if (!nodes[unit])
            continue;
        state->write<SoTextureUnitElement>().set(self, unit);
        action->traverse(nodes[unit], -1);
        then(unit);
    }
    state->write<SoTextureUnitElement>().set(self, 0);
}

} // namespace

SO_NODE_SOURCE(SoVRMLColorRGBA)

SoVRMLColorRGBA::SoVRMLColorRGBA()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(color);
}

SoVRMLColorRGBA::~SoVRMLColorRGBA() = default;

void SoVRMLColorRGBA::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLColorRGBA, SoNode, "VRMLColorRGBA");
}

SO_NODE_SOURCE(SoVRMLMultiTexture)

SoVRMLMultiTexture::SoVRMLMultiTexture()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(alpha, (1.0f));
    SO_VRML_EXPOSED(color, (1.0f, 1.0f, 1.0f));
    SO_VRML_EXPOSED_EMPTY(function);
    SO_VRML_EXPOSED_EMPTY(mode);
    SO_VRML_EXPOSED_EMPTY(source);
    SO_VRML_EXPOSED_EMPTY(texture);
}

SoVRMLMultiTexture::~SoVRMLMultiTexture() = default;

void SoVRMLMultiTexture::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMultiTexture, SoNode, "VRMLMultiTexture");
}

void SoVRMLMultiTexture::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (!SoOverrideElement::maySet(state, this, SoOverrideElement::TEXTURE))
        return;
    traverseUnits(texture, this, action, [this, state](int unit) {
        SoTextureStage& stage = SoLookExtrasElement::editStage(state, this, unit);
        setModes(entryOf(mode, unit).getString(), stage);
        stage.source = sourceOf(entryOf(source, unit));
        stage.function = functionOf(entryOf(function, unit));
        const SbColor& c = color.getValue();
        stage.factor = SbColorRGBA(c[0], c[1], c[2], alpha.getValue());
        if (unit == 0) {
            auto& first = state->write<SoTextureElement>();
            first.value().model = modelOf(stage.mode);
            first.accumulatedBy(this);
        }
    });
}

SO_NODE_SOURCE(SoVRMLMultiTextureCoordinate)

SoVRMLMultiTextureCoordinate::SoVRMLMultiTextureCoordinate()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(texCoord);
}

SoVRMLMultiTextureCoordinate::~SoVRMLMultiTextureCoordinate() = default;

void SoVRMLMultiTextureCoordinate::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMultiTextureCoordinate, SoNode, "VRMLMultiTextureCoordinate");
}

std::span<const SbVec2f> SoVRMLMultiTextureCoordinate::getPoints(int unit) const
{
    SoNode* node = unit < texCoord.getNum() && !texCoord.isIgnored()
                       ? SoVRMLProtoInstance::resolve(texCoord[unit])
                       : nullptr;
    if (!node || !node->isOfType(SoVRMLTextureCoordinate::getClassTypeId()))
        return {};
    return static_cast<const SoVRMLTextureCoordinate*>(node)->point.values();
}

SO_NODE_SOURCE(SoVRMLMultiTextureTransform)

SoVRMLMultiTextureTransform::SoVRMLMultiTextureTransform()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(textureTransform);
}

SoVRMLMultiTextureTransform::~SoVRMLMultiTextureTransform() = default;

void SoVRMLMultiTextureTransform::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMultiTextureTransform, SoNode, "VRMLMultiTextureTransform");
}

void SoVRMLMultiTextureTransform::doAction(SoAction* action)
{
    traverseUnits(textureTransform, this, action, [](int) {});
}

SO_NODE_SOURCE(SoVRMLTextureBackground)

SoVRMLTextureBackground::SoVRMLTextureBackground()
{
    SO_NODE_CONSTRUCTOR(SoVRMLBindable);
    SO_VRML_EXPOSED_EMPTY(groundAngle);
    SO_VRML_EXPOSED_EMPTY(groundColor);
    SO_VRML_EXPOSED_EMPTY(skyAngle);
    SO_VRML_EXPOSED_EMPTY(skyColor);
    SO_VRML_EXPOSED_EMPTY(backTexture);
    SO_VRML_EXPOSED_EMPTY(bottomTexture);
    SO_VRML_EXPOSED_EMPTY(frontTexture);
    SO_VRML_EXPOSED_EMPTY(leftTexture);
    SO_VRML_EXPOSED_EMPTY(rightTexture);
    SO_VRML_EXPOSED_EMPTY(topTexture);
}

SoVRMLTextureBackground::~SoVRMLTextureBackground() = default;

void SoVRMLTextureBackground::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTextureBackground, SoVRMLBindable, "VRMLTextureBackground");
}

const SbImage& SoVRMLTextureBackground::getPicture(int side) const
{
    const SoSFNode* const fields[] = {&frontTexture, &backTexture, &leftTexture,
                                      &rightTexture, &topTexture,  &bottomTexture};
    static const SbImage none;
    SoNode* node = SoVRMLProtoInstance::resolve(fields[side]->getValue());
    // Of several textures the first.
    if (node && node->isOfType(SoVRMLMultiTexture::getClassTypeId())) {
        const SoMFNode& textures = static_cast<SoVRMLMultiTexture*>(node)->texture;
        node = textures.getNum() > 0 ? SoVRMLProtoInstance::resolve(textures[0]) : nullptr;
    }
    return node && node->isOfType(SoVRMLTexture::getClassTypeId())
               ? static_cast<SoVRMLTexture*>(node)->getPicture()
               : none;
}
