#pragma once

#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/ShapeSource.h>

#include <cstdint>
#include <span>
#include <vector>

class SoState;

namespace kalmyr::detail {

/// The values of the node in a field; nothing when it is ignored, empty or holds another kind of
/// node.
std::span<const SbVec3f> pointsOf(const SoSFNode& field);
std::span<const SbVec3f> normalsOf(const SoSFNode& field);
std::span<const SbVec2f> texCoordsOf(const SoSFNode& field);
/// Adds those of the texture units after the first.
void addTexCoordSets(const SoSFNode& field, VertexInput& input);
bool hasTexture(SoState* state);
/// Key of what geometry takes from the state: whether there is a texture, and the transparency of
/// its colours.
std::uint64_t lookKey(SoState* state, const SoSFNode& color);

/// Values with the binding that VRML97 gives them.
template <class T>
Attribute<T> attribute(std::span<const T> values, const SoMFInt32& index, bool perVertex,
                       const char* indexField)
{
    Attribute<T> result;
    result.values = values;
    result.indices = index.values();
    result.indexField = indexField;
    if (perVertex) {
        result.binding = SoBinding::PER_VERTEX_INDEXED;
    } else {
        result.binding = result.indices.empty() ? SoBinding::PER_FACE : SoBinding::PER_FACE_INDEXED;
    }
    return result;
}

/// The colours of the node in a field with the transparency of the state, if the source wants them.
Attribute<std::uint32_t> colorsOf(SoState* state, const SoSFNode& field, const SoMFInt32& index,
                                  bool perVertex, ShapeSource& source);

/// Fills in the attributes that a grid of heights has in its fields, with the source's texture
/// coordinates where none are given.
template <class Grid>
void fillGridAttributes(const Grid& grid, SoState* state, ShapeSource& source)
{
    const auto given = texCoordsOf(grid.texCoord);
    const SoMFInt32 none;
    FaceInput& in = source.input;
    in.node = &grid;
    in.normals =
        attribute<SbVec3f>(normalsOf(grid.normal), none, grid.normalPerVertex.getValue(), "normal");
    in.colors = colorsOf(state, grid.color, none, grid.colorPerVertex.getValue(), source);
    in.texCoords = attribute<SbVec2f>(given, none, true, "texCoord");
    if (given.empty() && source.wantsValues())
        in.texCoords.values = source.texCoords;
    in.clockwise = !grid.ccw.getValue();
    in.solid = grid.solid.getValue();
    in.creaseAngle = grid.creaseAngle.getValue();
}

} // namespace kalmyr::detail
