#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoState.h>

#include <memory>
#include <vector>

namespace kalmyr::detail {

/// The planes that cut what follows: a, b, c, d in the space in which the present list is recorded.
/// Shared between stack levels; replaced, never edited.
class ClipPlaneElement final
    : public SoValueElement<ClipPlaneElement, std::shared_ptr<const std::vector<SbVec4f>>> {
public:
    static int getStackIndex()
    {
        static const int index = newStackIndex();
        return index;
    }
};

} // namespace kalmyr::detail
