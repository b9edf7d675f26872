#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoState.h>

#include <memory>
#include <span>
#include <vector>

/// Homogeneous positions of the node that set the coordinates as well, if it has them: to be used
/// only while the coordinate element was set by the same node.
class KALMYR_API SoHomogeneousElement final
    : public SoValueElement<SoHomogeneousElement, std::span<const SbVec4f>> {
public:
    static int getStackIndex();
};

/// Positions in the plane for the profiles that follow; one of the arrays is empty. Homogeneous
/// ones are divided by their last component.
struct SoProfileCoordinates {
    std::span<const SbVec2f> plain;
    std::span<const SbVec3f> homogeneous;
    std::size_t size() const { return plain.empty() ? homogeneous.size() : plain.size(); }
};
class KALMYR_API SoProfileCoordinateElement final
    : public SoValueElement<SoProfileCoordinateElement, SoProfileCoordinates> {
public:
    static int getStackIndex();
};

/// A run of points of a profile; several runs that do not begin anew make one outline.
struct SoProfilePiece {
    std::shared_ptr<const std::vector<SbVec2d>> points;
    bool beginsAnew = true;
};
class KALMYR_API SoProfileElement final
    : public SoValueElement<SoProfileElement, std::vector<SoProfilePiece>> {
public:
    static int getStackIndex();
};
