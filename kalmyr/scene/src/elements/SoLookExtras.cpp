#include <kalmyr/elements/SoLookExtras.h>

#include <kalmyr/elements/SoMatrixElements.h>

#include <algorithm>

bool operator==(const SoUniformValue& a, const SoUniformValue& b)
{
    return a.name == b.name && a.kind == b.kind && a.components == b.components
           && a.floats == b.floats && a.integers == b.integers && a.texture == b.texture;
}

bool SoLookExtras::hasMoreImages() const
{
    return stages.size() > 1 && std::any_of(stages.begin() + 1, stages.end(), [](const auto& one) {
               return !one.texture.image.isNull();
           });
}

bool SoLookExtras::hasStages() const
{
    return hasMoreImages() || (!stages.empty() && !stages[0].isPlain());
}

bool operator==(const SoLookExtras& a, const SoLookExtras& b)
{
    return a.stages == b.stages && a.offsetFactor == b.offsetFactor
           && a.offsetUnits == b.offsetUnits && a.offsetStyles == b.offsetStyles
           && a.depthTest == b.depthTest && a.depthWrite == b.depthWrite
           && a.depthFunction == b.depthFunction && a.depthRange[0] == b.depthRange[0]
           && a.depthRange[1] == b.depthRange[1] && a.alphaFunction == b.alphaFunction
           && a.alphaValue == b.alphaValue && a.program == b.program;
}

int SoLookExtrasElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

SoLookExtras& SoLookExtrasElement::edit(SoState* state, const SoNode* node)
{
    auto& element = state->write<SoLookExtrasElement>();
    const auto fresh = element.value() ? std::make_shared<SoLookExtras>(*element.value())
                                       : std::make_shared<SoLookExtras>();
    element.value() = fresh;
    element.accumulatedBy(node);
    return *fresh;
}

SoTextureStage& SoLookExtrasElement::editStage(SoState* state, const SoNode* node, int unit)
{
    SoLookExtras& extras = edit(state, node);
    const auto i =
        static_cast<std::size_t>(std::clamp(unit, 0, SoTextureUnitElement::kMaxUnits - 1));
    if (extras.stages.size() <= i) {
        extras.stages.resize(i + 1);
    }
    // One node sets the same under several units.
    state->write<SoLookExtrasElement>().mixValueId(i + 1);
    return extras.stages[i];
}

void SoLookExtrasElement::setTexture(SoState* state, const SoNode* node,
                                     const SoTextureValues& values, SoTextureStage::Kind kind,
                                     SoTextureValues::Wrap wrapR)
{
    const int unit = SoTextureUnitElement::get(state);
    const SoLookExtras* extras = get(state);
    const bool wasPlain =
        !extras || extras->stages.empty() || extras->stages[0].kind == SoTextureStage::FLAT;
    if (unit == 0) {
        state->write<SoTextureElement>().set(node, values);
        if (kind == SoTextureStage::FLAT && wasPlain) {
            return;
        }
    }
    SoTextureStage& stage = editStage(state, node, unit);
    stage.kind = kind;
    stage.wrapR = wrapR;
    if (unit > 0) {
        stage.texture = values;
    }
}

void SoLookExtrasElement::multTextureMatrix(SoState* state, const SoNode* node,
                                            const SbMatrix& matrix)
{
    const int unit = SoTextureUnitElement::get(state);
    if (unit == 0) {
        SoTextureMatrixElement::mult(state, node, matrix);
        return;
    }
    editStage(state, node, unit).matrix.multLeft(matrix);
}

void SoLookExtrasElement::setCoordinates(SoState* state, const SoNode* node,
                                         SoTextureStage::Coordinates coordinates)
{
    const auto unit = static_cast<std::size_t>(SoTextureUnitElement::get(state));
    const SoLookExtras* extras = get(state);
    const SoTextureStage::Coordinates present = extras && extras->stages.size() > unit
                                                    ? extras->stages[unit].coordinates
                                                    : SoTextureStage::GIVEN;
    if (present != coordinates) {
        editStage(state, node, static_cast<int>(unit)).coordinates = coordinates;
    }
    SoTextureCoordinateSetsElement::remove(state, node, static_cast<int>(unit));
}

void SoLookExtrasElement::clearTextures(SoState* state, const SoNode* node)
{
    state->write<SoTextureElement>().set(node, {});
    if (const SoLookExtras* extras = get(state); extras && !extras->stages.empty()) {
        edit(state, node).stages.clear();
    }
    if (SoTextureUnitElement::get(state) != 0) {
        state->write<SoTextureUnitElement>().set(node, 0);
    }
}

bool SoLookExtrasElement::isTextured(SoState* state)
{
    if (!state->get<SoTextureElement>().value().image.isNull()) {
        return true;
    }
    const SoLookExtras* extras = get(state);
    return extras && (extras->program || extras->hasMoreImages());
}
