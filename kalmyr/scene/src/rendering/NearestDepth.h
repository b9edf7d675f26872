#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SbViewportRegion.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

class SoGeometry;
class SoNode;

namespace kalmyr::detail {

/// Measures how near to the eye of a perspective view something is seen.
///
/// Separators whose box is out of view, or no nearer than what was found, are not looked into.
/// Shapes count by their box, unless the eye is so near to it, or within, that their triangles must
/// be asked. The boxes of runs of triangles are kept for the geometries met.
class NearestDepth {
public:
    struct View {
        SbViewportRegion region;
        SbMatrix worldToEye; ///< the eye looks along -z
        SbVec2f tangents;    ///< of half the angles of view, to the side and up
        /// The depth from which on the result need not be exact.
        float enough = 0;
        bool asBoxes = false; ///< shapes are seen as the edges of their boxes
    };

    /// Distance along the line of sight; the largest float when nothing is in view. What is
    /// returned is never farther than what is seen.
    float measure(SoNode* root, const View& view);

    /// Boxes of runs of consecutive primitives, and of groups of consecutive runs; in object space.
    struct Boxes {
        std::vector<SbBox3f> runs, groups;
    };
    struct Runs {
        Boxes triangles, lines, points;
    };
    const Runs& runsOf(const SoGeometry& geometry);
    static constexpr std::size_t kRunLength = 64; ///< and of the groups

private:
    static constexpr std::size_t kMaxKept = 64;
    std::unordered_map<std::uint64_t, Runs> m_runs; ///< by the id of the geometry
};

} // namespace kalmyr::detail
