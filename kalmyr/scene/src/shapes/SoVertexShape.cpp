#include <kalmyr/shapes/SoVertexShape.h>

#include "VertexKeys.h"
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/shapes/SoVertexProperty.h>

namespace {

bool isTextured(SoState* state)
{
    return SoLookExtrasElement::isTextured(state);
}

int orIndexedVertex(int binding)
{
    return binding ? binding : SoBinding::PER_VERTEX_INDEXED;
}

void fillNormals(SoState* state, const SoVertexProperty* own, kalmyr::Attribute<SbVec3f>& normals)
{
    if (own && own->normal.getNum() > 0) {
        normals.values = own->normal.values();
        normals.binding = own->normalBinding.getValue();
        return;
    }
    normals.values = state->get<SoNormalElement>().get();
    normals.binding = orIndexedVertex(state->get<SoNormalBindingElement>().get());
}

void fillTexCoords(SoState* state, const SoVertexProperty* own,
                   kalmyr::Attribute<SbVec2f>& texCoords)
{
    texCoords.binding = SoBinding::PER_VERTEX_INDEXED;
    if (own && own->texCoord.getNum() > 0) {
        texCoords.values = own->texCoord.values();
        return;
    }
    texCoords.values = state->get<SoTextureCoordinateElement>().get();
    texCoords.binding = orIndexedVertex(state->get<SoTextureCoordinateBindingElement>().get());
}

std::span<const float> floatsOf(const SoTextureCoordinateSet& set)
{
    if (!set.solid.empty())
        return {set.solid[0].getValue(), set.solid.size() * 3};
    return set.flat.empty() ? std::span<const float>()
                            : std::span<const float>(set.flat[0].getValue(), set.flat.size() * 2);
}

/// The coordinates of further units and of three components, and the inputs of shader programs. The
/// first unit always has flat ones when there are any, so that all is found by one index.
void fillMore(SoState* state, kalmyr::VertexInput& input)
{
    const bool textured = isTextured(state);
    for (const auto& set : state->get<SoTextureCoordinateSetsElement>().value()) {
        const std::span<const float> values = floatsOf(set);
        if (!textured || values.empty())
            continue;
        const int components = set.solid.empty() ? 2 : 3;
        input.more.push_back({set.unit, {}, components, values});
        if (input.texCoords.isGiven() && set.unit != 0)
            continue;
        const std::size_t count = values.size() / static_cast<std::size_t>(components);
        input.keptTexCoords.clear();
        for (std::size_t i = 0; i < count; ++i) {
            const float* at = values.data() + i * static_cast<std::size_t>(components);
            input.keptTexCoords.emplace_back(at[0], at[1]);
        }
        input.texCoords.values = input.keptTexCoords;
        input.texCoords.binding =
            orIndexedVertex(state->get<SoTextureCoordinateBindingElement>().get());
    }
    for (const auto& one : state->get<SoVertexAttributeElement>().value())
        input.more.push_back({-1, one.name, one.components, one.values});
}

void fillColors(SoState* state, const SoVertexProperty* own,
                kalmyr::Attribute<std::uint32_t>& colors, std::vector<std::uint32_t>* packed)
{
    if (own && own->orderedRGBA.getNum() > 0) {
        colors.values = own->orderedRGBA.values();
        colors.binding = own->materialBinding.getValue();
        return;
    }
    colors.binding = SoMaterialBindingElement::get(state);
    const SoMaterialValues& material = SoMaterialElement::get(state);
    const int count = std::max({material.numDiffuse, material.numTransparency, 1});
    colors.count = static_cast<std::size_t>(count);
    if (!packed)
        return;
    if (colors.binding == SoBinding::OVERALL) {
        colors.count = 0; // the geometry needs none
        return;
    }
    packed->reserve(colors.count);
    for (int i = 0; i < count; ++i) {
        packed->push_back(material.getDiffuse(i).getPackedValue(material.getTransparency(i)));
    }
    colors.values = *packed;
}

/// Shapes without indices take the values in order where an indexed binding is in force.
int withoutIndices(int binding)
{
    switch (binding) {
    case SoBinding::PER_PART_INDEXED:
        return SoBinding::PER_PART;
    case SoBinding::PER_FACE_INDEXED:
        return SoBinding::PER_FACE;
    case SoBinding::PER_VERTEX_INDEXED:
        return SoBinding::PER_VERTEX;
    default:
        return binding;
    }
}

template <class T, class Indices>
void setIndices(kalmyr::Attribute<T>& attribute, const Indices& all,
                std::span<const std::int32_t> indices, const char* field)
{
    if (!all.indexed) {
        attribute.binding = withoutIndices(attribute.binding);
        return;
    }
    attribute.indices = indices;
    attribute.indexField = field;
}

} // namespace

SO_NODE_SOURCE(SoVertexShape)

SoVertexShape::SoVertexShape()
{
    SO_NODE_CONSTRUCTOR(SoShape);
    SO_ADD_EMPTY_FIELD(vertexProperty);
}

SoVertexShape::~SoVertexShape() = default;

void SoVertexShape::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVertexShape, SoShape, "VertexShape");
}

void SoVertexShape::fillInput(SoState* state, const Indices& indices, kalmyr::VertexInput& input,
                              std::vector<std::uint32_t>& packedColors) const
{
    fillInput(state, indices, input, &packedColors);
}

void SoVertexShape::fillInput(SoState* state, const Indices& indices,
                              kalmyr::ShapeSource& source) const
{
    fillInput(state, indices, source.input, source.wantsValues() ? &source.colors : nullptr);
}

void SoVertexShape::fillInput(SoState* state, const Indices& indices, kalmyr::VertexInput& input,
                              std::vector<std::uint32_t>* packedColors) const
{
    const SoVertexProperty* own = getProperty();
    input.node = this;
    input.positions = own && own->vertex.getNum() > 0 ? own->vertex.values()
                                                      : state->get<SoCoordinateElement>().get();
    fillNormals(state, own, input.normals);
    // Details number the coordinates of the file, whether there is a texture or not.
    if (!packedColors || isTextured(state))
        fillTexCoords(state, own, input.texCoords);
    if (packedColors)
        fillMore(state, input);
    fillColors(state, own, input.colors, packedColors);
    setIndices(input.normals, indices, indices.normal, "normalIndex");
    setIndices(input.texCoords, indices, indices.texCoord, "textureCoordIndex");
    setIndices(input.colors, indices, indices.material, "materialIndex");
}

const SoVertexProperty* SoVertexShape::getProperty() const
{
    const SoNode* node = vertexProperty.isIgnored() ? nullptr : vertexProperty.getValue();
    if (!node || !node->isOfType(SoVertexProperty::getClassTypeId()))
        return nullptr;
    return static_cast<const SoVertexProperty*>(node);
}

void SoVertexShape::fillHints(SoState* state, kalmyr::FaceInput& input)
{
    const SoShapeHintsValues& hints = SoShapeHintsElement::get(state);
    input.convex = hints.faceType == SoShapeHintsValues::CONVEX;
    input.clockwise = hints.vertexOrdering == SoShapeHintsValues::CLOCKWISE;
    input.solid = hints.shapeType == SoShapeHintsValues::SOLID
                  && hints.vertexOrdering != SoShapeHintsValues::UNKNOWN_ORDERING;
    input.creaseAngle = hints.creaseAngle;
    input.makeTexCoords = isTextured(state);
}

std::uint64_t SoVertexShape::stateKey(SoState* state) const
{
    using kalmyr::detail::addToKey;
    // The property is below the shape and counts by the shape's own id.
    std::uint64_t key = addToKey(0, state->get<SoCoordinateElement>().getValueId());
    key = addToKey(key, state->get<SoNormalElement>().getValueId());
    key = addToKey(key, state->get<SoNormalBindingElement>().getValueId());
    key = addToKey(key, state->get<SoShapeHintsElement>().getValueId());
    const int binding = SoMaterialBindingElement::get(state);
    key = addToKey(key, static_cast<std::uint64_t>(binding));
    if (binding != SoBinding::OVERALL)
        key = addToKey(key, state->get<SoMaterialElement>().getValueId());
    if (!isTextured(state))
        return key;
    key = addToKey(key, state->get<SoTextureCoordinateElement>().getValueId());
    return addToKey(key, state->get<SoTextureCoordinateBindingElement>().getValueId());
}
