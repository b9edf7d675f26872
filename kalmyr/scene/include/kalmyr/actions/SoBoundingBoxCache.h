#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>

#include <cstdint>

class SoNode;
class SoState;

/// A box with the transformation from its own space to the surrounding one, and a centre.
///
/// Grows cheaply: a single box stays in its own space, and so stays tight under rotations; as soon
/// as there are several they become one axis-parallel box of the surrounding space.
struct KALMYR_API SoBounds {
    SbBox3f box;
    SbMatrix matrix = SbMatrix::identity();
    SbVec3f center; ///< of the only box, in its own space
    int count = 0;  ///< boxes it was made from: 0, 1 or "several" (2)

    bool isEmpty() const { return count == 0; }
    /// Adds a box under a matrix; empty boxes are ignored.
    void add(const SbBox3f& other, const SbMatrix& toHere, const SbVec3f& otherCenter);
    /// The axis-parallel box in the surrounding space.
    SbBox3f project() const;
    /// The one box's own centre, or the middle of the common box; in the surrounding space.
    SbVec3f getCenter() const { return count == 1 ? matrix.point(center) : box.getCenter(); }
};

/// What a separator remembers of the bounds of its content, in the separator's own space.
///
/// Valid while neither the separator, nor anything below it, nor any state element that sizes of
/// shapes depend on has changed. Kept by the separator; filled by the bounding box action.
class KALMYR_API SoBoundingBoxCache {
public:
    /// Whether the bounds hold for `node` under the present state.
    bool isValid(const SoNode* node, SoState* state) const;
    const SoBounds& getBounds() const { return m_bounds; }
    void set(const SoNode* node, std::uint64_t stateKey, const SoBounds& bounds, bool ownView);
    /// True when a camera inside decides what of the content is seen: its box tells nothing about
    /// the view outside.
    bool hasOwnView() const { return m_ownView; }

    /// Mixed ids of the state that sizes of shapes depend on: coordinates, complexity, inherited
    /// switch, and whatever addDependency() named.
    static std::uint64_t stateKey(SoState* state);
    /// Declares that the size of some shapes depends on an element (its getStackIndex()).
    static void addDependency(int elementStackIndex);

private:
    SoBounds m_bounds;
    std::uint64_t m_nodeId = 0;
    std::uint64_t m_stateKey = 0;
    bool m_ownView = false;
};
