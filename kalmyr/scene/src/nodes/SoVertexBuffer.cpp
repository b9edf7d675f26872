#include <kalmyr/nodes/SoVertexBuffer.h>

#include "core/CacheLock.h"
#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr SoEnumEntry kContents[] = {
    {"COORDINATES", SoVertexBuffer::COORDINATES},
    {"NORMALS", SoVertexBuffer::NORMALS},
    {"TEXTURE_COORDINATES", SoVertexBuffer::TEXTURE_COORDINATES},
    {"INPUT", SoVertexBuffer::INPUT},
};

template <class Vector>
std::span<const Vector> vectorsOf(std::span<const float> numbers)
{
    constexpr std::size_t kSize = sizeof(Vector) / sizeof(float);
    return {reinterpret_cast<const Vector*>(numbers.data()), numbers.size() / kSize};
}

} // namespace

SO_NODE_SOURCE(SoVertexBuffer)

SoVertexBuffer::SoVertexBuffer()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_EMPTY_FIELD(buffer);
    SO_ADD_FIELD(content, (COORDINATES));
    content.setEnums(kContents);
    SO_ADD_FIELD(name, (""));
    SO_ADD_FIELD(components, (1));
    SO_ADD_FIELD(offset, (0));
    SO_ADD_FIELD(stride, (0));
    SO_ADD_FIELD(count, (-1));
}

SoVertexBuffer::~SoVertexBuffer() = default;

void SoVertexBuffer::initClass()
{
    SO_NODE_INIT_CLASS(SoVertexBuffer, SoNode, "VertexBuffer");
}

void SoVertexBuffer::doAction(SoAction* action)
{
    SoState* state = action->getState();
    if (buffer.isIgnored() || !buffer.getValue())
        return;
    switch (content.getValue()) {
    case COORDINATES:
        state->write<SoCoordinateElement>().set(this, vectorsOf<SbVec3f>(numbers(3)));
        break;
    case NORMALS:
        if (SoOverrideElement::maySet(state, this, SoOverrideElement::NORMAL))
            state->write<SoNormalElement>().set(this, vectorsOf<SbVec3f>(numbers(3)));
        break;
    case TEXTURE_COORDINATES: {
        const int unit = SoTextureUnitElement::get(state);
        const auto points = vectorsOf<SbVec2f>(numbers(2));
        SoLookExtrasElement::setCoordinates(state, this, SoTextureStage::GIVEN);
        if (unit == 0)
            state->write<SoTextureCoordinateElement>().set(this, points);
        else
            SoTextureCoordinateSetsElement::add(state, this, {unit, points, {}});
        break;
    }
    default:
        if (const std::string word = name.getValue().getString(); !word.empty()) {
            const int each = std::clamp(components.getValue(), 1, 4);
            SoVertexAttributeElement::add(state, this,
                                          {word, each, numbers(static_cast<std::size_t>(each))});
        }
    }
}

/// The values as they are in the buffer when they are packed and aligned, else as a copy.
std::span<const float> SoVertexBuffer::numbers(std::size_t each)
{
    const std::span<const std::byte> bytes = buffer.getValue()->getBytes();
    const std::size_t size = each * sizeof(float);
    const auto first = static_cast<std::size_t>(std::max(0, offset.getValue()));
    const std::size_t step =
        stride.getValue() > 0 ? static_cast<std::size_t>(stride.getValue()) : size;
    if (first + size > bytes.size())
        return {};
    std::size_t number = (bytes.size() - first - size) / step + 1;
    if (count.getValue() >= 0)
        number = std::min(number, static_cast<std::size_t>(count.getValue()));
    const std::byte* from = bytes.data() + first;
    if (step == size && reinterpret_cast<std::uintptr_t>(from) % alignof(float) == 0)
        return {reinterpret_cast<const float*>(from), number * each};
    const kalmyr::detail::CacheLock lock;
    const std::uint64_t id = SoElement::mix(getChangeId(), buffer.getValue()->getChangeId());
    if (m_packedId != id) {
        m_packed.resize(number * each);
        for (std::size_t i = 0; i < number; ++i)
            std::memcpy(m_packed.data() + i * each, from + i * step, size);
        m_packedId = id;
    }
    return m_packed;
}
