#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>

#include <cstdint>
#include <memory>
#include <vector>

class SoChildList;
class SoNode;
class SoNotification;
class SoState;

namespace kalmyr::detail {
struct BoundsRun;
}

/// A box with the transformation from its own space to the surrounding one, and a centre.
///
/// A single box stays in its own space, and so stays tight under rotations. Several become one
/// axis-parallel box of the surrounding space, or, where one of them holds much and is turned, a
/// box of that one's space: boxes of boxes would grow with every rotation on the way up.
struct KALMYR_API SoBounds {
    SbBox3f box;
    SbMatrix matrix = SbMatrix::identity(); ///< the identity unless `inOwnSpace`
    SbVec3f center;                         ///< of the only box, in its own space
    int count = 0;                          ///< boxes it was made from: 0, 1 or "several" (2)
    bool inOwnSpace = false;
    bool holdsSeveral = false; ///< the box, though a single one here, was made of several

    bool isEmpty() const { return count == 0; }
    /// The axis-parallel box in the surrounding space.
    SbBox3f project() const;
    /// From the box's own space to one where the surrounding space stands under a matrix.
    SbMatrix matrixTo(const SbMatrix& toHere) const
    {
        return inOwnSpace ? matrix * toHere : toHere;
    }
    /// The one box's own centre, or the middle of the common box; in the surrounding space.
    SbVec3f getCenter() const { return matrix.point(getOwnCenter()); }
    SbVec3f getOwnCenter() const { return count == 1 ? center : box.getCenter(); }
};

/// The union of bounds that stand in one space.
class KALMYR_API SoBoundsUnion {
public:
    /// Adds bounds that stand under a matrix; empty ones are ignored.
    void add(const SoBounds& other, const SbMatrix& toHere);
    /// The same for bounds whose axis-parallel box in this space is known. They must not be
    /// isTurnedMass().
    void add(const SoBounds& other, const SbMatrix& toHere, const SbBox3f& projected);
    /// Adds an axis-parallel box of this space that was made of several.
    void addSeveral(const SbBox3f& box);
    bool isEmpty() const { return m_bounds.isEmpty(); }

    /// The tighter one of the boxes that are known.
    SoBounds get() const;
    /// An axis-parallel box of this space for several; it makes use of all that is known.
    SoBounds getAxisParallel() const;

    /// Whether the bounds hold several boxes and stand askew, so that their own space matters.
    static bool isTurnedMass(const SoBounds& bounds, const SbMatrix& toHere);

private:
    /// A second box of everything, in a space of its own.
    struct Turned {
        SbBox3f box;
        SbMatrix toHere;
        SbMatrix fromHere;
    };
    void begin(const SoBounds& other, const SbMatrix& toHere);
    void flatten();
    void turnTo(const SbBox3f& box, const SbMatrix& matrix);
    void addTurned(const SbBox3f& box, const SbMatrix& matrix, bool isMass);

    SoBounds m_bounds;
    std::unique_ptr<Turned> m_turned; ///< null mostly
};

/// Keeps the bounds of a separator's content, in the separator's own space.
///
/// Valid while neither the separator, nor anything below it, nor any state element that sizes of
/// shapes depend on has changed. Kept by the separator; filled by the bounding box action.
///
/// Of the children that keep their effects to themselves the bounds are remembered one by one, so
/// that after a change only what changed is measured anew. Where they are many, the owner's
/// notify() tells which changed, so that the others need not even be looked at.
class KALMYR_API SoBoundingBoxCache {
public:
    SoBoundingBoxCache();
    ~SoBoundingBoxCache();
    SoBoundingBoxCache(const SoBoundingBoxCache&) = delete;
    SoBoundingBoxCache& operator=(const SoBoundingBoxCache&) = delete;

    /// Whether the bounds hold for `node` under the present state.
    bool isValid(const SoNode* node, SoState* state) const;
    const SoBounds& getBounds() const { return m_bounds; }

    /// Bounds of a child in the space where it stands.
    struct Part {
        const SoNode* node = nullptr; ///< only compared; null where nothing is known
        std::uint64_t nodeId = 0;
        std::uint64_t stateKey = 0;
        SbBox3f projected;
        bool ownView = false;
        bool isTurnedMass = false;
    };
    /// Whether the bounds of that child, which stands at `index`, hold under a state of that key.
    bool knowsPart(int index, const SoNode* child, std::uint64_t stateKey) const;
    const Part& getPart(int i) const { return m_parts[static_cast<std::size_t>(i)]; }
    const SoBounds& getPartBounds(int i) const { return m_partBounds[static_cast<std::size_t>(i)]; }
    void setPart(int index, int numChildren, const SoNode* child, std::uint64_t stateKey,
                 const SoBounds& bounds, bool ownView);
    void set(const SoNode* node, std::uint64_t stateKey, const SoBounds& bounds, bool ownView);

    /// For the owner's notify(): something below changed, or the owner itself.
    void noteChange(const SoNotification& notification)
    {
        if (m_run)
            noteInRun(notification);
    }
    /// Fewer children are gone through one by one.
    static constexpr int kMinRun = 64;
    /// Prepares for being asked again: all parts from `first` on are known under that key, and
    /// none of them is a turned mass or has a view of its own. A run that broke is only dropped:
    /// the list may be edited again and again, which would make a new one each time in vain.
    void renewRun(int first, const SoChildList& children, std::uint64_t stateKey);
    /// The run that begins at `first`, or null where all must be gone through.
    kalmyr::detail::BoundsRun* findRun(int first, const SoChildList& children,
                                       std::uint64_t stateKey);
    void dropRun();
    /// The part at that index was set anew; false when it can no longer be one of the run.
    bool exchangeInRun(int index);

    /// True when a camera inside decides what of the content is seen: its box tells nothing about
    /// the view outside.
    bool hasOwnView() const { return m_ownView; }

    /// Mixed ids of the state that sizes of shapes depend on: coordinates, complexity, inherited
    /// switch, and whatever addDependency() named.
    static std::uint64_t stateKey(SoState* state);
    /// Declares that the size of some shapes depends on an element (its getStackIndex()).
    static void addDependency(int elementStackIndex);

private:
    void noteInRun(const SoNotification& notification);
    bool canRun(const Part& part) const { return !part.isTurnedMass && !part.ownView; }

    std::uint64_t m_nodeId = 0;
    std::uint64_t m_stateKey = 0;
    SoBounds m_bounds;
    bool m_ownView = false;
    std::unique_ptr<kalmyr::detail::BoundsRun> m_run; ///< null mostly
    // Apart, for the first are gone through whenever anything below changed.
    std::vector<Part> m_parts;
    std::vector<SoBounds> m_partBounds;
};
