#include "U3DContent.h"

#include "U3DBlocks.h"
#include "U3DFormat.h"
#include "U3DMeshLayout.h"
#include "U3DSymbols.h"

#include <algorithm>
#include <vector>

namespace kalmyr::detail {

namespace {

template <class Value>
std::uint32_t numOf(const std::vector<Value>& list)
{
    return static_cast<std::uint32_t>(list.size());
}

void writeCounts(U3DBlocks& out, const U3DMesh& mesh, const U3DMeshLayout& layout)
{
    out.u32(static_cast<std::uint32_t>(mesh.numFaces));
    out.u32(numOf(layout.positions));
    out.u32(numOf(layout.normals));
    out.u32(numOf(layout.colors));
    out.u32(0); // specular colours
    out.u32(numOf(layout.texCoords));
}

void writeArrays(U3DBlocks& out, const U3DMeshLayout& layout)
{
    for (const SbVec3f& position : layout.positions)
        out.vec(position);
    for (const SbVec3f& normal : layout.normals)
        out.vec(normal);
    for (const std::uint32_t color : layout.colors) {
        for (int shift = 24; shift >= 0; shift -= 8)
            out.f32(static_cast<float>(color >> shift & 0xff) / 255);
    }
    for (const SbVec2f& texCoord : layout.texCoords) {
        out.f32(texCoord[0]);
        out.f32(texCoord[1]);
        out.f32(0);
        out.f32(0);
    }
}

void writeFace(U3DSymbols& symbols, const U3DMeshLayout& layout, const std::uint32_t* corners)
{
    symbols.u32(0, SHADING_CONTEXT);
    for (int i = 0; i < 3; ++i) {
        const std::uint32_t vertex = corners[i];
        symbols.fixed(layout.positionOf(vertex), numOf(layout.positions));
        if (!layout.normals.empty())
            symbols.fixed(layout.normalOf(vertex), numOf(layout.normals));
        if (!layout.colors.empty())
            symbols.fixed(layout.colorOf(vertex), numOf(layout.colors));
        if (!layout.texCoords.empty())
            symbols.fixed(layout.texCoordOf(vertex), numOf(layout.texCoords));
    }
}

bool writeFaces(U3DBlocks& out, const U3DMesh& mesh, const U3DMeshLayout& layout,
                const U3DContentOptions& options)
{
    constexpr std::size_t kFacesAtOnce = 10'000;
    const SoGeometry& geometry = *mesh.geometry;
    const bool allHavePlaces = mesh.numFaces == geometry.getNumTriangles();
    const auto isPlaced = [&geometry](std::uint32_t i) { return hasPlace(geometry.positions[i]); };
    U3DSymbols symbols(out, options.compressed);
    for (std::size_t c = 0; c + 2 < geometry.triangles.size(); c += 3) {
        if (c / 3 % kFacesAtOnce == kFacesAtOnce - 1 && !options.advance(kFacesAtOnce))
            return false;
        const std::uint32_t* corners = &geometry.triangles[c];
        if (allHavePlaces || std::all_of(corners, corners + 3, isPlaced))
            writeFace(symbols, layout, corners);
    }
    symbols.finish();
    return options.advance(geometry.getNumTriangles() % kFacesAtOnce);
}

} // namespace

void declareQuality(U3DBlocks& out, float positionQuantum)
{
    constexpr std::uint32_t kBestQuality = 1000;
    for (int i = 0; i < 3; ++i)
        out.u32(kBestQuality);
    out.f32(positionQuantum);
    for (int i = 0; i < 4; ++i)
        out.f32(1); // steps of normals, texture coordinates and colours: not used
}

void declareMesh(U3DBlocks& out, const U3DGenerator& generator, const U3DMeshLayout& layout)
{
    const std::size_t start = out.begin(MESH_DECLARATION);
    out.text(generator.name);
    out.u32(0); // index in the chain
    out.u32(layout.normals.empty() ? 1 : 0);
    writeCounts(out, generator.mesh, layout);
    out.u32(1); // ways of shading
    out.u32(layout.colors.empty() ? 0 : 1);
    out.u32(layout.texCoords.empty() ? 0 : 1);
    if (!layout.texCoords.empty())
        out.u32(2); // dimensions
    out.u32(0);
    out.u32(numOf(layout.positions)); // lowest resolution: the only one
    out.u32(numOf(layout.positions));
    declareQuality(out, 1);
    for (int i = 0; i < 3; ++i)
        out.f32(0); // for changing normals with the resolution
    out.u32(0);     // bones
    out.end(start);
}

bool writeMesh(U3DBlocks& out, const U3DGenerator& generator, const U3DMeshLayout& layout,
               const U3DContentOptions& options)
{
    const std::size_t start = out.begin(MESH_CONTINUATION);
    out.text(generator.name);
    out.u32(0); // index in the chain
    writeCounts(out, generator.mesh, layout);
    writeArrays(out, layout);
    const bool goesOn = writeFaces(out, generator.mesh, layout, options);
    out.end(start);
    return goesOn;
}

} // namespace kalmyr::detail
