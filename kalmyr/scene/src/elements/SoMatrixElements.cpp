#include <kalmyr/elements/SoMatrixElements.h>

#include <bit>
#include <cstring>

namespace {

/// Tells matrices apart that one node sets one after another.
std::uint64_t idOf(const SbMatrix& matrix)
{
    constexpr std::uint64_t kFactor = 0x9fb21c651e98df25u;
    constexpr int kWords = sizeof(SbMatrix) / sizeof(std::uint64_t);
    std::uint64_t words[kWords];
    std::memcpy(words, &matrix, sizeof words);
    std::uint64_t even = 0, odd = 0; // two chains at once
    for (int i = 0; i < kWords; i += 2) {
        even = std::rotl((even ^ words[i]) * kFactor, 29);
        odd = std::rotl((odd ^ words[i + 1]) * kFactor, 31);
    }
    return SoElement::mix(even, odd);
}

} // namespace

int SoModelMatrixElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

void SoModelMatrixElement::makeIdentity(SoState* state, const SoNode* node)
{
    auto& element = state->write<SoModelMatrixElement>();
    element.value() = SbMatrix::identity();
    element.m_node = node;
    element.m_valueId = 0; // equal to the default, so caches may take it for that
}

void SoModelMatrixElement::set(SoState* state, const SoNode* node, const SbMatrix& matrix)
{
    auto& element = state->write<SoModelMatrixElement>();
    element.set(node, matrix);
    element.mixValueId(idOf(matrix));
}

void SoModelMatrixElement::mult(SoState* state, const SoNode* node, const SbMatrix& matrix)
{
    auto& element = state->write<SoModelMatrixElement>();
    element.value().multLeft(matrix);
    element.accumulatedBy(node);
    element.mixValueId(idOf(matrix));
}

int SoTextureMatrixElement::getStackIndex()
{
    static const int i = newStackIndex();
    return i;
}

void SoTextureMatrixElement::mult(SoState* state, const SoNode* node, const SbMatrix& matrix)
{
    auto& element = state->write<SoTextureMatrixElement>();
    element.value().multLeft(matrix);
    element.accumulatedBy(node);
    element.mixValueId(idOf(matrix));
}
