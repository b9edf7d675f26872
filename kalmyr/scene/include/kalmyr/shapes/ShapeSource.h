#pragma once

#include <kalmyr/shapes/FaceBuilder.h>

#include <cstdint>
#include <vector>

namespace kalmyr {

/// The faces, lines or points of a shape as its fields and the state have them: the geometry is
/// built from it, and the details of picks are numbered by it.
///
/// Spans point to fields, to the state and to the lists below, and are valid while the source is
/// and nothing is edited. Details are asked for often and concern a few places only, so a shape
/// leaves out for them what would have to be made anew each time.
struct KALMYR_API ShapeSource {
    enum Kind { NONE, FACES, LINES, POINTS };
    enum Purpose {
        GEOMETRY, ///< everything
        INDICES,  ///< colours and generated values may be missing: a count does
        NUMBERS   ///< generated positions and indices may be missing, too
    };

    explicit ShapeSource(Purpose wanted) : purpose(wanted) {}
    ShapeSource(const ShapeSource&) = delete;
    ShapeSource& operator=(const ShapeSource&) = delete;

    /// Whether to fill colours and the values of generated attributes.
    bool wantsValues() const { return purpose == GEOMETRY; }
    /// Whether to fill the lists of generated positions and indices.
    bool wantsLists() const { return purpose != NUMBERS; }

    /// Builds what the shape consists of; nothing for NONE.
    void build(SoGeometry& geometry) const;

    Purpose purpose;
    Kind kind = NONE;
    FaceInput input;
    std::vector<std::uint32_t> colors;    ///< storage for `input`
    std::vector<std::int32_t> coordIndex; ///< storage for indices that are generated
    std::vector<SbVec3f> positions;       ///< storage for positions that are generated
    std::vector<SbVec2f> texCoords;       ///< storage for texture coordinates that are generated
};

} // namespace kalmyr
