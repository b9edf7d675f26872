#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoRefCounter.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace kalmyr {
class TriangleTree;
}

/// What a shape looks like as triangles, line segments and points: the one form that rendering,
/// picking, bounding boxes, counting and export share.
///
/// Immutable once built, in object space, reference counted. Vertices are unique combinations of
/// position, normal, texture coordinate and colour, indexed by the three primitive lists.
class KALMYR_API SoGeometry final : public SoRefCounter {
public:
    SoGeometry();

    std::vector<SbVec3f> positions;
    std::vector<SbVec3f> normals;         ///< per vertex, unit length; empty: unlit
    std::vector<SbVec2f> texCoords;       ///< per vertex; empty: none
    std::vector<std::uint32_t> colors;    ///< per vertex diffuse 0xRRGGBBAA; empty: the material's
    std::vector<std::uint32_t> triangles; ///< three indices each, counter-clockwise outside
    std::vector<std::uint32_t> lines;     ///< two indices each
    std::vector<std::uint32_t> points;
    std::vector<std::int32_t> triangleFaces; ///< face of each triangle; empty: the triangle's index
    bool solid = false;                      ///< back faces may be culled
    bool twoSided = true;                    ///< back faces are lit with the reversed normal

    std::size_t getNumTriangles() const { return triangles.size() / 3; }
    std::size_t getNumLines() const { return lines.size() / 2; }
    bool isEmpty() const { return triangles.empty() && lines.empty() && points.empty(); }

    /// Unique in the process; buffers on the graphics card are kept under it.
    std::uint64_t getId() const { return m_id; }
    const SbBox3f& getBox() const; ///< of all positions used; computed on first use

    /// Search tree over the triangles, built on first use.
    const kalmyr::TriangleTree& getTriangleTree() const;

    /// Called when a geometry that others share by its parameters dies; null for the others.
    using DeathFunction = void (*)(const SoGeometry* geometry);
    void setDeathFunction(DeathFunction function) { m_onDeath = function; }

    /// Told the id of every geometry that dies, for those who keep things by id; null for nobody.
    using DeathObserver = void (*)(std::uint64_t id);
    static void setDeathObserver(DeathObserver observer);

private:
    ~SoGeometry() override;

    std::uint64_t m_id;
    mutable bool m_boxKnown = false;
    mutable SbBox3f m_box;
    mutable std::unique_ptr<kalmyr::TriangleTree> m_tree;
    DeathFunction m_onDeath = nullptr;
};
