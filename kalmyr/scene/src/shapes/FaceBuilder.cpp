#include <kalmyr/shapes/FaceBuilder.h>

#include "AttributeLookup.h"
#include "FaceMesh.h"
#include "FaceNormals.h"
#include "GeometryOutput.h"
#include "VertexTable.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <numeric>
#include <utility>

namespace kalmyr {

namespace {

using detail::AttributeLookup;
using detail::FaceMesh;
using detail::FaceNormals;
using detail::VertexTable;

/// Everything that is known while one geometry is built.
struct Build {
    const FaceInput& input;
    AttributeLookup normals, colors, texCoords;
    FaceMesh mesh;
    FaceNormals made;

    explicit Build(const FaceInput& in)
        : input(in),
          normals(in.normals, in.coordIndex),
          colors(in.colors, in.coordIndex),
          texCoords(in.texCoords, in.coordIndex)
    {
    }

    void read();
    void makeIndices(SoGeometry& geometry) const;
    bool sharesNothing() const;
    void makeCorners(SoGeometry& geometry);
    std::int32_t normalOf(std::uint32_t corner, const detail::Place& place) const;
};

void Build::read()
{
    const AttributeLookup* checked[3];
    int count = 0;
    for (const AttributeLookup* a : {&normals, &colors, &texCoords}) {
        if (!a->isConstant())
            checked[count++] = a;
    }
    mesh.read(input, checked, count);
    detail::warnOf(mesh.fault, input.node);
    // Too few values without indices of their own: generated ones show more than repeated ones.
    if (!normals.hasEnough(mesh.counts))
        normals.drop();
    if (!texCoords.hasEnough(mesh.counts))
        texCoords.drop();
    mesh.triangulate(input);
    if (!normals.isGiven() && input.makeNormals)
        made.compute(mesh, input);
}

std::int32_t Build::normalOf(std::uint32_t corner, const detail::Place& place) const
{
    detail::Fault ignored; // indices were checked when the faces were read
    if (normals.isGiven())
        return static_cast<std::int32_t>(normals.at(place, ignored));
    switch (made.mode) {
    case FaceNormals::BY_CORNER:
        return made.ofCorner[corner];
    case FaceNormals::BY_POSITION:
        return input.coordIndex[place.slot];
    default:
        return -1; // filled in by the caller, who knows the face
    }
}

void Build::makeIndices(SoGeometry& geometry) const
{
    const std::size_t numCorners = mesh.numTriangles() * 3;
    const auto numPositions = static_cast<std::uint32_t>(input.positions.size());
    const bool hasMade = !normals.isGiven() && input.makeNormals;
    const bool byFace = hasMade && made.mode == FaceNormals::BY_FACE;
    const auto numGiven = static_cast<std::uint32_t>(mesh.slots.size());
    const std::size_t expected =
        byFace ? std::min(numCorners, std::size_t(numGiven)) : input.positions.size();
    VertexTable table(numPositions + mesh.extra.size(), expected);
    geometry.triangles.resize(numCorners);
    detail::Fault ignored;
    for (std::size_t i = 0; i < numCorners; ++i) {
        const std::uint32_t face = mesh.faceOf(i / 3);
        const std::uint32_t corner = mesh.cornerOf(i);
        const bool isExtra = corner >= numGiven;
        const std::uint32_t like = isExtra ? mesh.extra[corner - numGiven].like : corner;
        const FaceMesh::Face& f = mesh.faces[face];
        const detail::Place place = f.at(mesh.slots[like]);
        VertexTable::Key key{};
        key.position = isExtra ? numPositions + corner - numGiven
                               : static_cast<std::uint32_t>(input.coordIndex[place.slot]);
        if (byFace)
            key.normal = static_cast<std::int32_t>(face);
        else if (hasMade || !normals.isConstant())
            key.normal = normalOf(like, place);
        if (!colors.isConstant())
            key.color = static_cast<std::int32_t>(colors.at(place, ignored));
        if (!texCoords.isConstant())
            key.texCoord = static_cast<std::int32_t>(texCoords.at(place, ignored));
        geometry.triangles[i] = table.add(key);
    }
    detail::VertexSources sources;
    sources.positions = input.positions;
    sources.normals =
        normals.isGiven() ? input.normals.values : std::span<const SbVec3f>(made.values);
    sources.unitNormals = hasMade;
    if (colors.isGiven())
        sources.colors = input.colors.values;
    if (texCoords.isGiven())
        sources.texCoords = input.texCoords.values;
    for (const auto& extra : mesh.extra) {
        sources.morePositions.push_back(extra.position);
        sources.likePositions.push_back(
            static_cast<std::uint32_t>(input.coordIndex[mesh.slots[extra.like]]));
    }
    sources.more = &input.more;
    detail::writeVertices(table, sources, geometry);
}

/// Faces with a normal each share no vertices: every corner is one. (What is tessellated may leave
/// corners out.)
bool Build::sharesNothing() const
{
    return !normals.isGiven() && input.makeNormals && made.mode == FaceNormals::BY_FACE
           && input.convex && !mesh.slots.empty();
}

void Build::makeCorners(SoGeometry& geometry)
{
    const std::size_t count = mesh.slots.size();
    geometry.positions.resize(count);
    geometry.normals.resize(count);
    if (colors.isGiven())
        geometry.colors.resize(count);
    if (texCoords.isGiven())
        geometry.texCoords.resize(count);
    detail::Fault ignored;
    const auto indexOf = [&](const AttributeLookup& attribute, const detail::Place& place) {
        return attribute.isConstant() ? 0 : static_cast<std::size_t>(attribute.at(place, ignored));
    };
    for (std::size_t f = 0; f < mesh.numFaces(); ++f) {
        const FaceMesh::Face& face = mesh.faces[f];
        for (std::size_t c = face.first; c < mesh.faces[f + 1].first; ++c) {
            const detail::Place place = face.at(mesh.slots[c]);
            geometry.positions[c] =
                input.positions[static_cast<std::size_t>(input.coordIndex[place.slot])];
            geometry.normals[c] = made.values[f];
            if (colors.isGiven())
                geometry.colors[c] = input.colors.values[indexOf(colors, place)];
            if (texCoords.isGiven())
                geometry.texCoords[c] = input.texCoords.values[indexOf(texCoords, place)];
        }
    }
    if (!input.more.empty()) {
        std::vector<detail::VertexPlaces> places(count);
        for (std::size_t f = 0; f < mesh.numFaces(); ++f) {
            const FaceMesh::Face& face = mesh.faces[f];
            for (std::size_t c = face.first; c < mesh.faces[f + 1].first; ++c) {
                const detail::Place place = face.at(mesh.slots[c]);
                places[c] = {texCoords.isGiven() ? indexOf(texCoords, place) : 0,
                             static_cast<std::size_t>(input.coordIndex[place.slot])};
            }
        }
        detail::writeMore(
            input.more, count, [&places](std::size_t v) { return places[v]; }, geometry);
    }
    if (mesh.onlyTriangles) {
        geometry.triangles.resize(count);
        std::iota(geometry.triangles.begin(), geometry.triangles.end(), 0u);
    } else {
        geometry.triangles = std::move(mesh.triangles);
    }
}

void flipTriangles(SoGeometry& geometry)
{
    for (std::size_t i = 0; i + 2 < geometry.triangles.size(); i += 3) {
        std::swap(geometry.triangles[i + 1], geometry.triangles[i + 2]);
    }
}

void writeFaces(const FaceMesh& mesh, SoGeometry& geometry)
{
    // Without gaps and with one triangle a face the numbers go without saying.
    if (mesh.onlyTriangles && mesh.counts.faces == mesh.numFaces())
        return;
    geometry.triangleFaces.resize(mesh.numTriangles());
    for (std::size_t t = 0; t < mesh.numTriangles(); ++t) {
        geometry.triangleFaces[t] = static_cast<std::int32_t>(mesh.faces[mesh.faceOf(t)].number);
    }
}

} // namespace

void FaceBuilder::build(SoGeometry& geometry) const
{
    Build build(m_input);
    build.read();
    writeFaces(build.mesh, geometry);
    if (build.sharesNothing())
        build.makeCorners(geometry);
    else
        build.makeIndices(geometry);
    if (m_input.clockwise)
        flipTriangles(geometry);
    if (geometry.texCoords.empty() && m_input.makeTexCoords)
        detail::makeTexCoords(geometry);
    geometry.solid = m_input.solid;
    geometry.twoSided = !m_input.solid;
}

} // namespace kalmyr
