#include "ConvertedTextures.h"

#include "ConversionTools.h"
#include "ConvertedLook.h"

#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/vrml/SoVRMLColor.h>
#include <kalmyr/vrml/SoVRMLExtraNodes.h>
#include <kalmyr/vrml/SoVRMLPixelTexture.h>
#include <kalmyr/vrml/SoVRMLTextureCoordinate.h>
#include <kalmyr/vrml/SoVRMLTextureTransform.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

/// What can be said of a unit: a flat picture with given coordinates.
bool isSayable(const SoTextureStage& stage)
{
    return stage.kind == SoTextureStage::FLAT && stage.coordinates == SoTextureStage::GIVEN;
}

/// A mode that does what the texture's own model does, as near as there is one.
const char* modeOf(SoTextureValues::Model model)
{
    switch (model) {
    case SoTextureValues::REPLACE:
        return "REPLACE";
    case SoTextureValues::DECAL:
        return "BLENDTEXTUREALPHA, SELECTARG2";
    default:
        return "MODULATE";
    }
}

SbString modeText(const SoTextureStage& stage, SoTextureValues::Model model, bool isShown)
{
    if (!isShown)
        return "OFF";
    if (stage.mode == SoTextureStage::AS_MODEL)
        return modeOf(model);
    SbString text = SoTextureStage::nameOf(stage.mode);
    if (stage.alphaMode != SoTextureStage::AS_MODEL && stage.alphaMode != stage.mode)
        text += SbString(", ") + SoTextureStage::nameOf(stage.alphaMode);
    return text;
}

const char* sourceText(SoTextureStage::Source source)
{
    constexpr const char* kTexts[] = {"", "DIFFUSE", "SPECULAR", "FACTOR"};
    return kTexts[source];
}

const char* functionText(SoTextureStage::Function function)
{
    constexpr const char* kTexts[] = {"", "COMPLEMENT", "ALPHAREPLICATE"};
    return kTexts[function];
}

SoVRMLPixelTexture* pixelTexture(const SoTextureValues& values)
{
    auto* made = new SoVRMLPixelTexture;
    made->image = values.image;
    made->repeatS = values.wrapS == SoTextureValues::REPEAT;
    made->repeatT = values.wrapT == SoTextureValues::REPEAT;
    return made;
}

/// A unit without a picture has one that is switched off.
SoNode* noTexture()
{
    const unsigned char white = 255;
    auto* made = new SoVRMLPixelTexture;
    made->image.setValue(SbVec2i32(1, 1), 1, &white);
    return made;
}

} // namespace

bool hasFileTexture(SoState* state)
{
    const SoLookExtras* extras = SoLookExtrasElement::get(state);
    return !state->get<SoTextureElement>().value().image.isNull()
           && (!extras || extras->stages.empty() || isSayable(extras->stages[0]));
}

bool hasSeveralTextures(SoState* state)
{
    const SoLookExtras* extras = SoLookExtrasElement::get(state);
    if (!extras)
        return false;
    const auto& stages = extras->stages;
    const bool first =
        !stages.empty() && isSayable(stages[0]) && !stages[0].isPlain() && hasFileTexture(state);
    return first
           || std::any_of(
               stages.begin() + (stages.empty() ? 0 : 1), stages.end(),
               [](const auto& stage) { return isSayable(stage) && !stage.texture.image.isNull(); });
}

SoNode* multiTexture(SoState* state, SoNode* first)
{
    const auto& stages = SoLookExtrasElement::get(state)->stages;
    auto* made = new SoVRMLMultiTexture;
    for (std::size_t unit = 0; unit < stages.size(); ++unit) {
        const SoTextureStage& stage = stages[unit];
        const SoTextureValues& values =
            unit == 0 ? state->get<SoTextureElement>().value() : stage.texture;
        const bool isShown = isSayable(stage) && !values.image.isNull();
        const int i = static_cast<int>(unit);
        if (unit == 0 && first)
            made->texture.set1Value(i, first);
        else
            made->texture.set1Value(i, isShown ? pixelTexture(values) : noTexture());
        made->mode.set1Value(i, modeText(stage, values.model, isShown));
        made->source.set1Value(i, SbString(sourceText(stage.source)));
        made->function.set1Value(i, SbString(functionText(stage.function)));
        // There is one factor for all: that of the first unit that uses it.
        if (stage.source == SoTextureStage::FACTOR
            || stage.mode == SoTextureStage::BLENDFACTORALPHA) {
            if (made->color.isDefault() && made->alpha.isDefault()) {
                made->color.setValue(stage.factor[0], stage.factor[1], stage.factor[2]);
                made->alpha = stage.factor[3];
            }
        }
    }
    return made;
}

SoNode* vrml97TextureTransform(const SbMatrix& matrix)
{
    if (matrix == SbMatrix::identity())
        return nullptr;
    const TextureTransform factors = factorTextureMatrix(matrix);
    auto* transform = new SoVRMLTextureTransform;
    transform->translation.setValue(factors.translation[0], factors.translation[1]);
    transform->rotation = factors.rotation;
    transform->scale.setValue(factors.scale[0], factors.scale[1]);
    return transform;
}

SoNode* multiTextureTransform(SoState* state, SoNode* first)
{
    const auto& stages = SoLookExtrasElement::get(state)->stages;
    const bool any = first || std::any_of(stages.begin(), stages.end(), [](const auto& stage) {
                         return stage.matrix != SbMatrix::identity();
                     });
    if (!any)
        return nullptr;
    auto* made = new SoVRMLMultiTextureTransform;
    for (std::size_t unit = 0; unit < stages.size(); ++unit) {
        SoNode* one = unit == 0 ? first : vrml97TextureTransform(stages[unit].matrix);
        made->textureTransform.set1Value(static_cast<int>(unit),
                                         one ? one : new SoVRMLTextureTransform);
    }
    return made;
}

SoNode* vrml97TexCoords(const SoGeometry& geometry)
{
    auto* first = new SoVRMLTextureCoordinate;
    fill(first->point, geometry.texCoords);
    int units = 1;
    if (geometry.extras) {
        for (const auto& set : geometry.extras->texCoordSets)
            units = std::max(units, set.unit + 1);
    }
    if (units == 1)
        return first;
    auto* made = new SoVRMLMultiTextureCoordinate;
    for (int unit = 0; unit < units; ++unit)
        made->texCoord.set1Value(unit, first);
    for (const auto& set : geometry.extras->texCoordSets) {
        if (set.unit == 0)
            continue;
        std::vector<SbVec2f> points;
        for (const SbVec4f& value : set.values)
            points.emplace_back(value[0], value[1]);
        auto* coords = new SoVRMLTextureCoordinate;
        fill(coords->point, points);
        made->texCoord.set1Value(set.unit, coords);
    }
    return made;
}

SoNode* vrml97Colors(const SoGeometry& geometry)
{
    const auto& packed = geometry.colors;
    const bool differs = std::any_of(packed.begin(), packed.end(), [&packed](std::uint32_t color) {
        return (color & 0xff) != (packed.front() & 0xff);
    });
    if (!differs) {
        auto* colors = new SoVRMLColor;
        fill(colors->color, colorsOf(geometry));
        return colors;
    }
    std::vector<SbColorRGBA> values;
    for (const std::uint32_t color : packed) {
        const auto part = [color](int shift) {
            return static_cast<float>(color >> shift & 0xff) / 255;
        };
        values.emplace_back(part(24), part(16), part(8), part(0));
    }
    auto* colors = new SoVRMLColorRGBA;
    fill(colors->color, values);
    return colors;
}

} // namespace kalmyr::detail
