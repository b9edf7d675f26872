#include "FaceMesh.h"

#include "FaceTessellator.h"
#include "PrimitiveRuns.h"

#include <cmath>
#include <optional>

namespace kalmyr::detail {

/// One pass over the coordinate indices.
struct FaceMesh::Reader {
    FaceMesh& mesh;
    const FaceInput& input;
    const AttributeLookup* const* attributes;
    int numAttributes;
    PrimitiveRuns runs;

    std::uint32_t run = 0;
    std::uint32_t faceNumber = 0;
    std::int32_t highest = -1;

    void readRun(std::uint32_t begin, std::uint32_t end);
    bool isUsable(std::size_t firstCorner, const Face& face);
    void finishFace(std::uint32_t first);
};

bool FaceMesh::Reader::isUsable(std::size_t firstCorner, const Face& face)
{
    for (std::size_t c = firstCorner; c < mesh.slots.size(); ++c) {
        const std::uint32_t slot = mesh.slots[c];
        const std::int32_t index = input.coordIndex[slot];
        if (static_cast<std::size_t>(static_cast<std::uint32_t>(index)) >= input.positions.size()) {
            mesh.fault.record(input.coordField, index, input.positions.size(), slot);
            return false;
        }
        highest = std::max(highest, index);
        for (int a = 0; a < numAttributes; ++a) {
            if (attributes[a]->at(face.at(slot), mesh.fault) < 0)
                return false;
        }
    }
    return true;
}

void FaceMesh::Reader::finishFace(std::uint32_t first)
{
    const Face face{first, faceNumber, run, input.faceSize > 0 ? faceNumber : run};
    ++faceNumber;
    if (mesh.slots.size() - first < 3 || !isUsable(first, face)) {
        mesh.slots.resize(first);
        return;
    }
    mesh.onlyTriangles = mesh.onlyTriangles && mesh.slots.size() - first == 3;
    mesh.faces.push_back(face);
}

void FaceMesh::Reader::readRun(std::uint32_t begin, std::uint32_t end)
{
    const std::uint32_t count = runs.count(end - begin);
    for (std::uint32_t k = 0; k < count; ++k) {
        const auto first = static_cast<std::uint32_t>(mesh.slots.size());
        runs.addCorners(begin, end, k, mesh.slots);
        finishFace(first);
    }
    ++run;
}

void FaceMesh::read(const FaceInput& input, const AttributeLookup* const* attributes,
                    int numAttributes)
{
    Reader reader{*this, input, attributes, numAttributes, PrimitiveRuns::of(input)};
    const auto size = static_cast<std::uint32_t>(input.coordIndex.size());
    slots.reserve(input.strips || input.quadStrips ? size * 3UL : size);
    faces.reserve(size / 4 + 2);
    forRuns(input.coordIndex,
            [&](std::uint32_t begin, std::uint32_t end) { reader.readRun(begin, end); });
    counts.parts = input.faceSize > 0 ? reader.faceNumber : reader.run;
    counts.faces = reader.faceNumber;
    const bool openEnd = size > 0 && input.coordIndex.back() != -1;
    counts.corners = size - reader.run + (openEnd ? 1 : 0);
    counts.positions = static_cast<std::uint32_t>(reader.highest + 1);
    faces.push_back({static_cast<std::uint32_t>(slots.size()), 0, 0, 0});
}

SbVec3f newellNormal(std::span<const SbVec3f> polygon)
{
    // Relative to the first corner: far from the origin the products would lose their digits.
    SbVec3f sum;
    const SbVec3f origin = polygon[0];
    for (std::size_t i = 1; i + 1 < polygon.size(); ++i) {
        sum += (polygon[i] - origin).cross(polygon[i + 1] - origin);
    }
    return sum;
}

namespace {

/// Whether a polygon turns only one way, and only once around.
bool isConvex(std::span<const SbVec3f> polygon, const SbVec3f& normal)
{
    const std::size_t n = polygon.size();
    // A polygon that turns one way is convex when it goes up and down just once along some axis.
    int axis = 0;
    for (int k = 1; k < 3; ++k) {
        if (std::abs(normal[k]) < std::abs(normal[axis]))
            axis = k;
    }
    const float tolerance = -1e-6f * normal.length();
    int changes = 0;
    float lastStep = 0, firstStep = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const SbVec3f &a = polygon[i], &b = polygon[(i + 1) % n], &c = polygon[(i + 2) % n];
        const SbVec3f ab = b - a;
        if (ab.cross(c - b).dot(normal) < tolerance * normal.length())
            return false;
        const float step = ab[axis];
        if (step == 0)
            continue;
        if (firstStep == 0)
            firstStep = step;
        if (lastStep != 0 && (step > 0) != (lastStep > 0))
            ++changes;
        lastStep = step;
    }
    if (lastStep != 0 && (firstStep > 0) != (lastStep > 0))
        ++changes;
    return changes <= 2;
}

class Triangulator {
public:
    Triangulator(FaceMesh& mesh, const FaceInput& input) : m_mesh(mesh), m_input(input) {}

    void addFace(std::uint32_t face)
    {
        const std::uint32_t first = m_mesh.faces[face].first;
        const std::uint32_t count = m_mesh.faces[face + 1].first - first;
        if (count > 3 && !m_input.convex && tessellate(face, first, count))
            return;
        for (std::uint32_t i = 1; i + 1 < count; ++i)
            add(face, first, first + i, first + i + 1);
    }

private:
    void add(std::uint32_t face, std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        m_mesh.triangles.insert(m_mesh.triangles.end(), {a, b, c});
        m_mesh.triangleFaces.push_back(face);
    }

    /// False for a convex face, and for one that has no area.
    bool tessellate(std::uint32_t face, std::uint32_t first, std::uint32_t count)
    {
        m_polygon.clear();
        for (std::uint32_t c = first; c < first + count; ++c) {
            m_polygon.push_back(
                m_input.positions[static_cast<std::size_t>(m_input.coordIndex[m_mesh.slots[c]])]);
        }
        const SbVec3f normal = newellNormal(m_polygon);
        if (!(normal.length() > 0) || isConvex(m_polygon, normal))
            return false;
        if (!m_tessellator)
            m_tessellator.emplace();
        if (!m_tessellator->tessellate(m_polygon, normal))
            return false;
        const auto base = static_cast<std::uint32_t>(m_mesh.slots.size() + m_mesh.extra.size());
        for (const auto& point : m_tessellator->getNewPoints()) {
            m_mesh.extra.push_back({point.position, first + point.like});
        }
        const auto corner = [&](std::uint32_t i) {
            return i < count ? first + i : base + i - count;
        };
        const auto& t = m_tessellator->getTriangles();
        for (std::size_t i = 0; i < t.size(); i += 3)
            add(face, corner(t[i]), corner(t[i + 1]), corner(t[i + 2]));
        return true;
    }

    FaceMesh& m_mesh;
    const FaceInput& m_input;
    std::vector<SbVec3f> m_polygon;
    std::optional<FaceTessellator> m_tessellator;
};

} // namespace

void FaceMesh::triangulate(const FaceInput& input)
{
    if (onlyTriangles)
        return;
    const std::size_t expected = slots.size() - 2 * numFaces();
    triangles.reserve(expected * 3);
    triangleFaces.reserve(expected);
    Triangulator triangulator(*this, input);
    for (std::uint32_t f = 0; f < numFaces(); ++f)
        triangulator.addFace(f);
}

} // namespace kalmyr::detail
