#include <kalmyr/elements/SoTextureUnits.h>

#include <algorithm>
#include <array>
#include <cctype>

namespace {

constexpr std::array<const char*, SoTextureStage::NUM_MODES> kModeNames = {
    "",
    "MODULATE",
    "REPLACE",
    "MODULATE2X",
    "MODULATE4X",
    "ADD",
    "ADDSIGNED",
    "ADDSIGNED2X",
    "SUBTRACT",
    "ADDSMOOTH",
    "BLENDDIFFUSEALPHA",
    "BLENDTEXTUREALPHA",
    "BLENDFACTORALPHA",
    "BLENDCURRENTALPHA",
    "MODULATEALPHA_ADDCOLOR",
    "MODULATEINVALPHA_ADDCOLOR",
    "MODULATEINVCOLOR_ADDALPHA",
    "DOTPRODUCT3",
    "SELECTARG1",
    "SELECTARG2",
    "OFF",
};

bool isSame(const SoTextureValues& a, const SoTextureValues& b)
{
    return a.image == b.image && a.wrapS == b.wrapS && a.wrapT == b.wrapT && a.model == b.model
           && a.blendColor == b.blendColor;
}

} // namespace

int SoTextureUnitElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

bool SoTextureStage::isPlain() const
{
    return kind == FLAT && mode == AS_MODEL && alphaMode == AS_MODEL && function == NONE
           && coordinates == GIVEN;
}

bool operator==(const SoTextureStage& a, const SoTextureStage& b)
{
    return isSame(a.texture, b.texture) && a.matrix == b.matrix && a.kind == b.kind
           && a.wrapR == b.wrapR && a.mode == b.mode && a.alphaMode == b.alphaMode
           && a.source == b.source && a.function == b.function && a.factor == b.factor
           && a.coordinates == b.coordinates;
}

bool SoTextureStage::findMode(const std::string& word, Mode& mode)
{
    std::string upper;
    for (const char c : word) {
        if (c != ' ') {
            upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    const auto* const found = std::find(kModeNames.begin(), kModeNames.end(), upper);
    mode = found == kModeNames.end() ? AS_MODEL : static_cast<Mode>(found - kModeNames.begin());
    return found != kModeNames.end();
}

const char* SoTextureStage::nameOf(Mode mode)
{
    return kModeNames[static_cast<std::size_t>(mode)];
}

int SoTextureCoordinateSetsElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

void SoTextureCoordinateSetsElement::add(SoState* state, const SoNode* node,
                                         const SoTextureCoordinateSet& set)
{
    auto& element = state->write<SoTextureCoordinateSetsElement>();
    std::erase_if(element.value(), [&set](const auto& one) { return one.unit == set.unit; });
    element.value().push_back(set);
    element.accumulatedBy(node);
    element.mixValueId(static_cast<std::uint64_t>(set.unit) + 1);
}

void SoTextureCoordinateSetsElement::remove(SoState* state, const SoNode* node, int unit)
{
    const auto isOf = [unit](const auto& one) { return one.unit == unit; };
    const auto& present = state->get<SoTextureCoordinateSetsElement>().value();
    if (std::none_of(present.begin(), present.end(), isOf)) {
        return;
    }
    auto& element = state->write<SoTextureCoordinateSetsElement>();
    std::erase_if(element.value(), isOf);
    element.accumulatedBy(node);
    element.mixValueId(static_cast<std::uint64_t>(unit) + 1);
}

int SoVertexAttributeElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

void SoVertexAttributeElement::add(SoState* state, const SoNode* node,
                                   const SoVertexAttributeValues& values)
{
    auto& element = state->write<SoVertexAttributeElement>();
    std::erase_if(element.value(), [&](const auto& one) { return one.name == values.name; });
    element.value().push_back(values);
    element.accumulatedBy(node);
}
