#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbViewVolume.h>

class SoHandleEventAction;
class SbSphereProjector;

/// The pointer that holds a dragger, and where it leads what was taken.
///
/// All points and directions are those of the space around the dragger, whatever matrix leads from
/// there to the world. The questions are answered in relation to where the dragger was taken, never
/// to the previous answer, so that errors do not add up. Each is false, and its result unchanged,
/// where the pointer leads nowhere: what was taken then stays where it is.
class KALMYR_VISIBLE SoDragPointer {
public:
    /// The pointer of the event, in the state that the action has at the dragger.
    explicit SoDragPointer(SoHandleEventAction* action);

    SbVec3f hit;      ///< the point that was taken, when it was taken; exactly under the pointer
    SbVec3f anchor;   ///< where the handle stood then; the hit itself for lines and faces
    SbVec3f opposite; ///< and what stood opposite to it
    bool shift = false;
    bool ctrl = false;

    /// The point under the pointer that is nearest to one, for lines are met near by as well.
    SbVec3f pointNear(const SbVec3f& point) const;

    /// Where the hit comes to that may move along a line, in a plane, or in the plane across the
    /// line of sight. Exactly under the pointer, as near as it may be for the line.
    bool moveOnLine(const SbVec3f& direction, SbVec3f& to) const;
    bool moveInPlane(const SbVec3f& normal, SbVec3f& to) const;
    bool moveAcrossView(SbVec3f& to) const;
    /// The angle about an axis by which the hit has been turned, from -pi to pi; held as a cylinder
    /// is, or as a disc is. A disc that is seen from its edge is held as a cylinder.
    bool turnCylinder(const SbVec3f& center, const SbVec3f& axis, float& angle) const;
    bool turnDisc(const SbVec3f& center, const SbVec3f& axis, float& angle) const;
    /// Where the hit comes to on a ball about a centre.
    bool turnBall(const SbVec3f& center, SbVec3f& to) const;

private:
    SbVec3f sightTo(const SbVec3f& point) const;

    SbViewVolume m_volume;
    SbMatrix m_toWorld;
    SbVec2f m_position;
};
