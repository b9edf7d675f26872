#pragma once

#include "FaceMesh.h"

namespace kalmyr::detail {

/// Normals computed from the faces themselves: smooth across edges whose faces meet at less than
/// the crease angle, sharp across the others. Linear in the number of corners.
struct FaceNormals {
    /// How a corner finds its normal in `values`.
    enum Mode { BY_FACE, BY_POSITION, BY_CORNER };

    Mode mode = BY_FACE;
    std::vector<SbVec3f> values;
    std::vector<std::int32_t> ofCorner; ///< BY_CORNER only

    void compute(const FaceMesh& mesh, const FaceInput& input);
};

} // namespace kalmyr::detail
